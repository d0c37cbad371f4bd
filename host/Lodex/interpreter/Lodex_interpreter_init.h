#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// The command language: statements, verbs, journal.
class Lodex_interpreter_init : public LibraryInit<Lodex_interpreter_init> {
    friend class LibraryInit<Lodex_interpreter_init>;
    static void start();
};

} // namespace Lodex
