#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// The application around the libraries: actions, main windows.
class Lodex_appli_init : public LibraryInit<Lodex_appli_init> {
    friend class LibraryInit<Lodex_appli_init>;
    static void start();
};

} // namespace Lodex
