#pragma once

// The language's own types, as a Mac with Apple silicon has them.

typedef struct objc_class* Class;
typedef struct objc_selector* SEL;
typedef bool BOOL;

#ifdef __OBJC__
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr
#endif
