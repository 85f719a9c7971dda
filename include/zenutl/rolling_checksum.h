// RollingChecksum: the 32-bit value that seals a closed audit-trail session.
//
// A session's signature is a running sum over the text of its DOM subtree: every attribute
// value and every text node, in document order, fed one 16-bit code unit at a time through a
// small state machine. It makes accidental or careless edits of a saved trail visible; it holds
// no secret and is no cryptographic signature (for digests see the MD5 family).
//
// The walk over a node (`FeedNode`) is what the audit trail seals and verifies with:
//   - an element named "CheckSum" in any ASCII case is skipped with everything under it, so a
//     session's own stored signature never enters its sum;
//   - a text node feeds its value;
//   - any other node feeds the values of its attributes in the order of the DOM's attribute
//     map, which Xerces-C keeps sorted by name, and then its children, first to last.
// Element and attribute names never enter the sum, only values. Only the low byte of each code
// unit counts: saved trails depend on that, so two texts that differ only in high bytes have
// the same sum.
//
// The stored form of a signature is the sum in lower-case hexadecimal without prefix or
// leading zeros ("%x"): 0x919 is stored as "919".
//
// Nothing here throws or allocates beyond `CString`; a null text or node adds nothing. The
// caller owns the DOM and keeps the XML platform initialised while it walks it.
#ifndef ZENUTL_ROLLING_CHECKSUM_H_
#define ZENUTL_ROLLING_CHECKSUM_H_

#include <xercesc/util/XercesDefs.hpp>

#include <cstdint>

#include "zenutl/cstring.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMNode;
XERCES_CPP_NAMESPACE_END

class RollingChecksum {
 public:
  // The values every signature starts from.
  static constexpr std::uint16_t kStartState = 0xD971;
  static constexpr std::uint16_t kMultiplier = 0xCE6D;
  static constexpr std::uint16_t kIncrement = 0x58BF;

  RollingChecksum() = default;

  // One step: c = (high byte of the state) XOR (low byte of `unit`); the sum grows by c
  // (modulo 2^32); the state becomes (c + state) * multiplier + increment (modulo 2^16).
  void FeedUnit(XMLCh unit);

  // Feeds each unit up to the terminating zero, the terminator itself not included.
  // "" and null change nothing. From the start values, "A" leaves sum 0x98 and state 0x6C94.
  void FeedText(const XMLCh* text);

  // Feeds a node and everything under it by the walk described at the top. Runs continue on
  // the same state, so feeding two nodes in turn equals feeding their texts as one stream.
  void FeedNode(const XERCES_CPP_NAMESPACE::DOMNode* node);

  std::uint32_t GetSum() const { return mSum; }
  std::uint16_t GetState() const { return mState; }

  // The sum in its stored form: "%x", e.g. "919".
  CString FormatSum() const;

  // The stored form of the signature of `node`, computed from the start values; "0" for null.
  static CString ComputeSignature(const XERCES_CPP_NAMESPACE::DOMNode* node);

  // True when `name` is "CheckSum" in any ASCII case, i.e. an element the walk leaves out.
  static bool IsCheckSumName(const XMLCh* name);

 private:
  std::uint16_t mState = kStartState;
  std::uint16_t mMultiplier = kMultiplier;
  std::uint16_t mIncrement = kIncrement;
  std::uint32_t mSum = 0;
};

#endif  // ZENUTL_ROLLING_CHECKSUM_H_
