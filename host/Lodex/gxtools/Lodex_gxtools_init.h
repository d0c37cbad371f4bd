#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Dialog helpers for graphic objects.
class Lodex_gxtools_init : public LibraryInit<Lodex_gxtools_init> {
    friend class LibraryInit<Lodex_gxtools_init>;
    static void start();
};

} // namespace Lodex
