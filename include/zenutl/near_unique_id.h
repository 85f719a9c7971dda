// GetNearUniqueID: cheap numbers to tell apart the objects one process makes, such as the
// elements of a generated page.
//
// The numbers are unique within a process, from any number of threads, until the counter wraps
// (after some 3.26 thousand million calls). They start at the hundredths of a second elapsed
// since the local New Year when first asked for, so two processes get different numbers only as
// far as their first calls lie apart. For identifiers unique everywhere use ZnGuid.
//
// Error contract: nothing throws or reports.
#ifndef ZENUTL_NEAR_UNIQUE_ID_H_
#define ZENUTL_NEAR_UNIQUE_ID_H_

// The counter, then one more for the next call. Past 0xC271D4FF the counter starts again: the
// call after 0xC271D4FF answers 0xC271D500, and the calls after that 0, 1, 2...
unsigned long GetNearUniqueID();

#endif  // ZENUTL_NEAR_UNIQUE_ID_H_
