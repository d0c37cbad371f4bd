#pragma once

#include "frame/Kelvane_gui_init.h"

#include <Kelvane/upscaling/Kelvane_upscaling_init.h>
#include <Lodex/appli/Lodex_appli_init.h>
#include <Lodex/geobase/Lodex_geobase_init.h>
#include <Lodex/gtools/Lodex_gtools_init.h>
#include <Lodex/gui/Lodex_gui_init.h>
#include <Lodex/gviews/Lodex_gviews_init.h>
#include <Lodex/gxtools/Lodex_gxtools_init.h>
#include <Lodex/interpreter/Lodex_interpreter_init.h>
#include <Lodex/math/Lodex_math_init.h>
#include <Lodex/qtools/Lodex_qtools_init.h>
#include <Lodex/surfaces/Lodex_surfaces_init.h>
#include <Lodex/tgobjs/Lodex_tgobjs_init.h>
#include <Lodex/utils/Lodex_utils_init.h>
#include <Lodex/volumes/Lodex_volumes_init.h>
#include <Lodex/xtools/Lodex_xtools_init.h>

namespace Kelvane {

/// Start-up of one source unit of the module: a static object in the unit brings up the libraries in the order given
/// and enters the unit as a user of the module until the module is unloaded.
template <class... Libraries> class SourceUnit {
public:
    SourceUnit()
    {
        (Libraries::initialize(), ...);
        Kelvane_gui_init::initialize();
    }
    ~SourceUnit() { Kelvane_gui_init::terminate(); }
    SourceUnit(const SourceUnit&) = delete;
    SourceUnit& operator=(const SourceUnit&) = delete;
};

/// A unit with dialogs in it, which may reach any library of the host.
using DialogUnit =
    SourceUnit<Kelvane_upscaling_init, Lodex::Lodex_utils_init, Lodex::Lodex_math_init, Lodex::Lodex_geobase_init,
               Lodex::Lodex_qtools_init, Lodex::Lodex_volumes_init, Lodex::Lodex_surfaces_init,
               Lodex::Lodex_gxtools_init, Lodex::Lodex_gtools_init, Lodex::Lodex_xtools_init, Lodex::Lodex_appli_init,
               Lodex::Lodex_interpreter_init, Lodex::Lodex_gviews_init, Lodex::Lodex_tgobjs_init,
               Lodex::Lodex_gui_init>;

} // namespace Kelvane
