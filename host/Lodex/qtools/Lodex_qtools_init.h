#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Widgets that know no grid: selection lists, number fields, pictures.
class Lodex_qtools_init : public LibraryInit<Lodex_qtools_init> {
    friend class LibraryInit<Lodex_qtools_init>;
    static void start();
};

} // namespace Lodex
