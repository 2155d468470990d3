#pragma once

// The functions that take a locale which libc++ expects of a Mac.

#include <locale.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <time.h>
#include <wchar.h>
#include <wctype.h>

#ifdef __cplusplus
extern "C" {
#endif

int asprintf_l(char** result, locale_t locale, const char* format, ...);
wint_t btowc_l(int character, locale_t locale);
int fprintf_l(FILE* stream, locale_t locale, const char* format, ...);
struct lconv* localeconv_l(locale_t locale);
size_t mbrlen_l(const char* text, size_t size, mbstate_t* state, locale_t locale);
size_t mbrtowc_l(wchar_t* wide, const char* text, size_t size, mbstate_t* state, locale_t locale);
size_t mbsnrtowcs_l(wchar_t* wide, const char** text, size_t count, size_t size, mbstate_t* state, locale_t locale);
size_t mbsrtowcs_l(wchar_t* wide, const char** text, size_t size, mbstate_t* state, locale_t locale);
int mbtowc_l(wchar_t* wide, const char* text, size_t size, locale_t locale);
int snprintf_l(char* text, size_t size, locale_t locale, const char* format, ...);
int sscanf_l(const char* text, locale_t locale, const char* format, ...);
double strtod_l(const char* text, char** end, locale_t locale);
float strtof_l(const char* text, char** end, locale_t locale);
long double strtold_l(const char* text, char** end, locale_t locale);
long long strtoll_l(const char* text, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale);
int vasprintf_l(char** result, locale_t locale, const char* format, va_list arguments);
int wctob_l(wint_t character, locale_t locale);
size_t wcrtomb_l(char* text, wchar_t wide, mbstate_t* state, locale_t locale);
size_t wcsnrtombs_l(char* text, const wchar_t** wide, size_t count, size_t size, mbstate_t* state, locale_t locale);
int iswblank_l(wint_t character, locale_t locale);
int ___mb_cur_max_l(locale_t locale);

#ifdef __cplusplus
}
#endif

#define MB_CUR_MAX_L(locale) ___mb_cur_max_l(locale)

// The kinds of character, by the names under which libc++ asks for them. Which bit is which does not matter here.
#define _CTYPE_A 0x0001
#define _CTYPE_B 0x0002
#define _CTYPE_C 0x0004
#define _CTYPE_D 0x0008
#define _CTYPE_L 0x0010
#define _CTYPE_P 0x0020
#define _CTYPE_R 0x0040
#define _CTYPE_S 0x0400
#define _CTYPE_U 0x0100
#define _CTYPE_X 0x0200
