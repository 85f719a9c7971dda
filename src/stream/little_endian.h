// The stream formats of this library are memory images of little-endian values: the bytes of
// a value go out as they lie. That is only right on a little-endian machine, so building for
// any other is refused here rather than writing files no other build can read.
#ifndef ZENUTL_SRC_STREAM_LITTLE_ENDIAN_H_
#define ZENUTL_SRC_STREAM_LITTLE_ENDIAN_H_

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the stream formats are little-endian memory images; this machine is not");

#endif  // ZENUTL_SRC_STREAM_LITTLE_ENDIAN_H_
