// The record behind an AuditTrail: the DOM document, the parser that may own it, and the open
// session. Shared between the trail's document and persistence halves.
#ifndef ZENUTL_AUDIT_AUDIT_TRAIL_DOCUMENT_H_
#define ZENUTL_AUDIT_AUDIT_TRAIL_DOCUMENT_H_

#include <xercesc/dom/DOM.hpp>

#include <boost/shared_ptr.hpp>

#include "config/guarded_dom_parser.h"

struct AuditTrailDocument {
  // Owned; null until the first Load or Read.
  zenutl::config::GuardedDOMParser* parser = nullptr;
  // Owned by this record (released with release()) only while there is no parser.
  xercesc::DOMDocument* document = nullptr;
  // The open "Session" element, or null.
  xercesc::DOMElement* session = nullptr;
  // Set when a stored trail that Load could not read could not be moved aside either: saving
  // would overwrite it, so Save doesn't until a Load succeeds.
  bool keepStoredTrail = false;

  xercesc::DOMDocument* GetDocument() const { return parser ? parser->getDocument() : document; }
  xercesc::DOMElement* GetRoot() const {
    xercesc::DOMDocument* doc = GetDocument();
    return doc ? doc->getDocumentElement() : nullptr;
  }
};

namespace zenutl {
namespace audit {

// Allocates a record, initialises the XML platform for its lifetime and builds the initial
// document: the stylesheet instruction and the "AuditTrail" root. The last owner to let go
// frees the parser or the owned document and the record's hold on the platform.
boost::shared_ptr<AuditTrailDocument> CreateAuditTrailDocument();

// The root's child at `index` (elements and all), or null.
xercesc::DOMNode* RootChildAt(const AuditTrailDocument& record, int index);
// Number of children of the root; 0 without a document or root.
int RootChildCount(const AuditTrailDocument& record);
// The position of the last closed session: n - 1, or n - 2 while a session is open.
int LastClosedSessionIndex(const AuditTrailDocument& record);

}  // namespace audit
}  // namespace zenutl

#endif  // ZENUTL_AUDIT_AUDIT_TRAIL_DOCUMENT_H_
