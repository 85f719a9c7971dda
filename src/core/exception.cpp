#include "zenutl/exception.h"

Exception::Exception(const CString& message) : mMessage(message) {}

Exception::Exception(const CString& message, const Exception& inner)
    : mMessage(message), mInnerException(inner.Clone()) {}

Exception::~Exception() = default;

Exception* Exception::Clone() const {
  return new Exception(*this);
}

CString Exception::RecursiveWhy() const {
  CString result(mMessage);
  if (mInnerException) result.AppendFormat("\n%s", mInnerException->RecursiveWhy().GetString());
  return result;
}

#define ZENUTL_DEFINE_EXCEPTION(Name) \
  Name::~Name() = default;            \
  Name* Name::Clone() const {         \
    return new Name(*this);           \
  }

ZENUTL_DEFINE_EXCEPTION(UnderflowError)
ZENUTL_DEFINE_EXCEPTION(OverflowError)
ZENUTL_DEFINE_EXCEPTION(InvalidArgument)
ZENUTL_DEFINE_EXCEPTION(CancelException)
ZENUTL_DEFINE_EXCEPTION(InvalidOperationException)
ZENUTL_DEFINE_EXCEPTION(NotImplementedException)
ZENUTL_DEFINE_EXCEPTION(ConfigurationException)
ZENUTL_DEFINE_EXCEPTION(DeadlockException)
ZENUTL_DEFINE_EXCEPTION(StreamException)
