#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Kelvane {

/// Upscalers, cell mappers and flow unit statistics.
class Kelvane_upscaling_init : public Lodex::LibraryInit<Kelvane_upscaling_init> {
    friend class Lodex::LibraryInit<Kelvane_upscaling_init>;
    static void start();
};

} // namespace Kelvane
