// The whole public interface of zenutl in one include.
#ifndef ZENUTL_ZENUTL_H_
#define ZENUTL_ZENUTL_H_

#include "zenutl/cstring.h"
#include "zenutl/exception.h"
#include "zenutl/platform_types.h"

#endif  // ZENUTL_ZENUTL_H_
