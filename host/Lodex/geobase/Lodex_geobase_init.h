#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// The object catalogue, styles, units of measurement.
class Lodex_geobase_init : public LibraryInit<Lodex_geobase_init> {
    friend class LibraryInit<Lodex_geobase_init>;
    static void start();
};

} // namespace Lodex
