/* Apple's <objc/objc.h> makes nil a nullptr for C++; GCC's makes it an object, which no pointer to
   an object takes. */
#pragma once
#include <objc/objc.h>
#undef nil
#define nil nullptr
