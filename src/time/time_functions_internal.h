// The time functions' one replaceable dependency: the question which time of the zone is in
// effect. Linux always has an answer, so the answer a failing zone query gives on other systems
// can only be reached by replacing the query.
#ifndef ZENUTL_TIME_TIME_FUNCTIONS_INTERNAL_H_
#define ZENUTL_TIME_TIME_FUNCTIONS_INTERNAL_H_

#include "zenutl/platform_types.h"

namespace zenutl {
namespace detail {

using TimeZoneIdQuery = DWORD (*)();

// Installs `query` (null: the platform's own) and returns the one it replaces.
TimeZoneIdQuery SetTimeZoneIdQuery(TimeZoneIdQuery query);

// Asks the installed query.
DWORD QueryTimeZoneId();

}  // namespace detail
}  // namespace zenutl

#endif  // ZENUTL_TIME_TIME_FUNCTIONS_INTERNAL_H_
