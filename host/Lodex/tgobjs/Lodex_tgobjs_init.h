#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Graphic twins of catalogue objects.
class Lodex_tgobjs_init : public LibraryInit<Lodex_tgobjs_init> {
    friend class LibraryInit<Lodex_tgobjs_init>;
    static void start();
};

} // namespace Lodex
