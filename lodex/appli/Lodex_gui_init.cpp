#include <Lodex/gui/Lodex_gui_init.h>

#include <Lodex/appli/Lodex_appli_init.h>
#include <Lodex/geobase/Lodex_geobase_init.h>
#include <Lodex/gtools/Lodex_gtools_init.h>
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

namespace Lodex {

void Lodex_gui_init::start()
{
    Lodex_utils_init::initialize();
    Lodex_math_init::initialize();
    Lodex_geobase_init::initialize();
    Lodex_interpreter_init::initialize();
    Lodex_volumes_init::initialize();
    Lodex_surfaces_init::initialize();
    Lodex_qtools_init::initialize();
    Lodex_xtools_init::initialize();
    Lodex_gxtools_init::initialize();
    Lodex_gtools_init::initialize();
    Lodex_gviews_init::initialize();
    Lodex_tgobjs_init::initialize();
    Lodex_appli_init::initialize();
}

} // namespace Lodex
