// The published constant tables of Blowfish, from which every key schedule starts.
#ifndef ZENUTL_DIGEST_BLOWFISH_TABLES_H_
#define ZENUTL_DIGEST_BLOWFISH_TABLES_H_

#include "zenutl/platform_types.h"

namespace zenutl {
namespace digest {

extern const DWORD kBlowfishP[18];      // begins 0x243F6A88
extern const DWORD kBlowfishS[4][256];  // begins 0xD1310BA6

}  // namespace digest
}  // namespace zenutl

#endif  // ZENUTL_DIGEST_BLOWFISH_TABLES_H_
