#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Cameras, their tools and picking.
class Lodex_gviews_init : public LibraryInit<Lodex_gviews_init> {
    friend class LibraryInit<Lodex_gviews_init>;
    static void start();
};

} // namespace Lodex
