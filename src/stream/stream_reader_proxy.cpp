#include "zenutl/stream_reader_proxy.h"

#define ZENUTL_PROXY_READ(Name, Type)                                 \
  Type StreamReaderProxy::Read##Name(Type defaultValue) const {       \
    return mReader != nullptr ? mReader->Read##Name() : defaultValue; \
  }

ZENUTL_PROXY_READ(Bool, bool)
ZENUTL_PROXY_READ(Char, char)
ZENUTL_PROXY_READ(Int8, char)
ZENUTL_PROXY_READ(UInt8, unsigned char)
ZENUTL_PROXY_READ(Int16, short)
ZENUTL_PROXY_READ(UInt16, unsigned short)
ZENUTL_PROXY_READ(Int32, int)
ZENUTL_PROXY_READ(UInt32, std::uint32_t)
ZENUTL_PROXY_READ(Int64, long long)
ZENUTL_PROXY_READ(UInt64, unsigned long long)
ZENUTL_PROXY_READ(Float, float)
ZENUTL_PROXY_READ(Double, double)

#undef ZENUTL_PROXY_READ

CString StreamReaderProxy::ReadString(const CString& defaultValue) {
  return mReader != nullptr ? mReader->ReadString() : defaultValue;
}

std::string StreamReaderProxy::ReadStdString(const std::string& defaultValue) {
  return mReader != nullptr ? mReader->ReadStdString() : defaultValue;
}
