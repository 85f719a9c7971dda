// The counter behind GetNearUniqueID, settable so that its wrap and its seeding can be reached
// in a test.
#ifndef ZENUTL_MISC_NEAR_UNIQUE_ID_INTERNAL_H_
#define ZENUTL_MISC_NEAR_UNIQUE_ID_INTERNAL_H_

#include <cstdint>

namespace zenutl {
namespace detail {

// The next GetNearUniqueID starts from `value`, as if the counter had been seeded with it.
void SetNearUniqueIDCounter(std::uint32_t value);
// The next GetNearUniqueID seeds the counter again, as the first call of a process does.
void ForgetNearUniqueIDSeed();

}  // namespace detail
}  // namespace zenutl

#endif  // ZENUTL_MISC_NEAR_UNIQUE_ID_INTERNAL_H_
