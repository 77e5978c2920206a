#pragma once

// Marks what libLspPing.so exports: the classes, functions and friends its
// installed headers declare and defines out of line, and every polymorphic or
// exception type, whose type information must be one across the library's
// boundary. Everything else is built with hidden visibility, so the shared
// library's ABI is what its headers declare. ELF needs the same attribute on
// both sides of the boundary.
#define LSPPING_EXPORT __attribute__((visibility("default")))
