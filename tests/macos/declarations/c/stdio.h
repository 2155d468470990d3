#pragma once

#include_next <stdio.h>

// What a Mac has beside it.
#define RENAME_SWAP 0x00000002

#ifdef __cplusplus
extern "C" {
#endif

int renamex_np(const char* from, const char* to, unsigned int flags);

#ifdef __cplusplus
}
#endif
