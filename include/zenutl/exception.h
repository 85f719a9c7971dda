// Exception: the root of everything this library throws.
//
// A small family of value types. A caller catches by type, reads the one-line message with
// `Why`, or the whole chain of causes with `RecursiveWhy` (outermost first, one per line).
// The family deliberately does not derive from `std::exception`: a handler for standard
// exceptions does not catch these, and the library's own JSON parse error (a
// `std::runtime_error`) is not caught by a handler for `Exception`.
//
// Only a plain `Exception` can carry a cause; it stores a clone of the cause, so the caller's
// object may go away at once. Copies and clones share the cause rather than duplicating it.
#ifndef ZENUTL_EXCEPTION_H_
#define ZENUTL_EXCEPTION_H_

#include <boost/shared_ptr.hpp>

#include "zenutl/cstring.h"

class Exception {
 public:
  Exception() = default;
  Exception(const CString& message);  // NOLINT: implicit as in the original interface
  Exception(const CString& message, const Exception& inner);
  Exception(const Exception& other) = default;
  Exception& operator=(const Exception& other) = default;
  virtual ~Exception();

  // A heap copy of the same dynamic type, owned by the caller; shares the cause.
  virtual Exception* Clone() const;

  const CString& Why() const { return mMessage; }
  // This message, then "\n" and the cause's RecursiveWhy, down the chain.
  CString RecursiveWhy() const;
  // The cause, still owned by this exception; null when there is none.
  const Exception* GetInnerException() const { return mInnerException.get(); }

 private:
  CString mMessage;
  boost::shared_ptr<Exception> mInnerException;
};

// Declares a member of the family: same data as Exception, different type, no cause.
#define ZENUTL_DECLARE_EXCEPTION(Name)                                \
  class Name : public Exception {                                     \
   public:                                                            \
    Name(const CString& message) : Exception(message) {} /* NOLINT */ \
    Name(const Name& other) = default;                                \
    Name& operator=(const Name& other) = default;                     \
    ~Name() override;                                                 \
    Name* Clone() const override;                                     \
  }

ZENUTL_DECLARE_EXCEPTION(UnderflowError);             // text number too small for a double
ZENUTL_DECLARE_EXCEPTION(OverflowError);              // text number too large for a double
ZENUTL_DECLARE_EXCEPTION(InvalidArgument);            // text that is no number
ZENUTL_DECLARE_EXCEPTION(CancelException);            // for callers: an operation was cancelled
ZENUTL_DECLARE_EXCEPTION(InvalidOperationException);  // for callers: not valid in this state
ZENUTL_DECLARE_EXCEPTION(NotImplementedException);    // for callers: not implemented
ZENUTL_DECLARE_EXCEPTION(ConfigurationException);     // failures of a configuration store
ZENUTL_DECLARE_EXCEPTION(DeadlockException);          // a lock order that would deadlock

// Failures of the binary streams; the one member with a default constructor, whose message is
// the class's name, "StreamException".
class StreamException : public Exception {
 public:
  StreamException() : Exception("StreamException") {}
  StreamException(const CString& message) : Exception(message) {}  // NOLINT
  StreamException(const StreamException& other) = default;
  StreamException& operator=(const StreamException& other) = default;
  ~StreamException() override;
  StreamException* Clone() const override;
};

#undef ZENUTL_DECLARE_EXCEPTION

#endif  // ZENUTL_EXCEPTION_H_
