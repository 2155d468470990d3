#pragma once

// Read before all else: the C types whose size or spelling differs between a Mac and the C library whose headers stand in for
// the Mac's own. The names that keep those headers from defining them are that library's.

typedef signed char __int8_t;
typedef unsigned char __uint8_t;
typedef int __int32_t;
typedef unsigned int __uint32_t;
typedef long long __int64_t;
typedef unsigned long long __uint64_t;

typedef long long int64_t;
typedef unsigned long long uint64_t;
typedef unsigned long long u_int64_t;
typedef unsigned short mode_t;
typedef unsigned short nlink_t;
typedef long long off_t;
typedef unsigned long long ino_t;
typedef int dev_t;
typedef int blksize_t;
typedef int suseconds_t;

#define __DEFINED_int64_t
#define __DEFINED_uint64_t
#define __DEFINED_u_int64_t
#define __DEFINED_mode_t
#define __DEFINED_nlink_t
#define __DEFINED_off_t
#define __DEFINED_ino_t
#define __DEFINED_dev_t
#define __DEFINED_blksize_t
#define __DEFINED_suseconds_t
