#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Stratigraphic grids and the verbs that make and change them.
class Lodex_volumes_init : public LibraryInit<Lodex_volumes_init> {
    friend class LibraryInit<Lodex_volumes_init>;
    static void start();
};

} // namespace Lodex
