#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Numerical helpers shared by the host libraries.
class Lodex_math_init : public LibraryInit<Lodex_math_init> {
    friend class LibraryInit<Lodex_math_init>;
    static void start();
};

} // namespace Lodex
