#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Strings, lists, messages, registries, progress.
class Lodex_utils_init : public LibraryInit<Lodex_utils_init> {
    friend class LibraryInit<Lodex_utils_init>;
    static void start();
};

} // namespace Lodex
