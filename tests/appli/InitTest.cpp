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

#include <gtest/gtest.h>

#include <array>

TEST(GuiInit, BringsUpEveryLibrary)
{
    using namespace Lodex;
    Lodex_gui_init::initialize();
    const std::array counts = {
        Lodex_utils_init::count(),    Lodex_math_init::count(),   Lodex_geobase_init::count(),
        Lodex_volumes_init::count(),  Lodex_qtools_init::count(), Lodex_interpreter_init::count(),
        Lodex_surfaces_init::count(), Lodex_xtools_init::count(), Lodex_gxtools_init::count(),
        Lodex_gtools_init::count(),   Lodex_gviews_init::count(), Lodex_tgobjs_init::count(),
        Lodex_appli_init::count()};
    for (const int count : counts)
        EXPECT_GE(count, 1);
    const int appli = Lodex_appli_init::count();
    Lodex_gui_init::initialize();
    EXPECT_EQ(Lodex_gui_init::count(), 2);
    EXPECT_EQ(Lodex_appli_init::count(), appli) << "the others are brought up once";
    Lodex_gui_init::terminate();
    Lodex_gui_init::terminate();
    EXPECT_EQ(Lodex_gui_init::count(), 0);
}
