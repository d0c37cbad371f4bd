#include "frame/Kelvane_gui_init.h"
#include "frame/SourceUnit.h"

#include <string>
#include <vector>

namespace {

using Kelvane::Kelvane_gui_init;

std::vector<std::string> started;

template <int N> struct Library {
    static void initialize() { started.push_back("library " + std::to_string(N)); }
};

TEST(ModuleInit, EverySourceUnitIsAUser)
{
    EXPECT_EQ(Kelvane_gui_init::count_, 3);
}

TEST(ModuleInit, UnitsBroughtUpEveryLibrary)
{
    for (const int count :
         {Kelvane::Kelvane_upscaling_init::count(), Lodex::Lodex_utils_init::count(), Lodex::Lodex_math_init::count(),
          Lodex::Lodex_geobase_init::count(), Lodex::Lodex_qtools_init::count(), Lodex::Lodex_volumes_init::count(),
          Lodex::Lodex_surfaces_init::count(), Lodex::Lodex_gxtools_init::count(), Lodex::Lodex_gtools_init::count(),
          Lodex::Lodex_xtools_init::count(), Lodex::Lodex_appli_init::count(), Lodex::Lodex_interpreter_init::count(),
          Lodex::Lodex_gviews_init::count(), Lodex::Lodex_tgobjs_init::count(), Lodex::Lodex_gui_init::count()})
        EXPECT_GE(count, 3);
}

TEST(ModuleInit, InitializeAndTerminateOnlyCount)
{
    const int before = Kelvane_gui_init::count_;
    const int utils = Lodex::Lodex_utils_init::count();
    Kelvane_gui_init::initialize();
    Kelvane_gui_init::initialize();
    EXPECT_EQ(Kelvane_gui_init::count_, before + 2);
    Kelvane_gui_init::terminate();
    Kelvane_gui_init::terminate();
    EXPECT_EQ(Kelvane_gui_init::count_, before);
    EXPECT_EQ(Lodex::Lodex_utils_init::count(), utils);
}

TEST(ModuleInit, AnObjectIsAUserAsLongAsItLives)
{
    const int before = Kelvane_gui_init::count_;
    {
        const Kelvane_gui_init user;
        const Kelvane_gui_init other;
        EXPECT_EQ(Kelvane_gui_init::count_, before + 2);
    }
    EXPECT_EQ(Kelvane_gui_init::count_, before);
}

TEST(ModuleInit, TheCounterMayPassZero)
{
    const int before = Kelvane_gui_init::count_;
    for (int i = 0; i < before + 1; ++i)
        Kelvane_gui_init::terminate();
    EXPECT_EQ(Kelvane_gui_init::count_, -1);
    for (int i = 0; i < before + 1; ++i)
        Kelvane_gui_init::initialize();
    EXPECT_EQ(Kelvane_gui_init::count_, before);
}

TEST(ModuleInit, AUnitStartsItsLibrariesInOrderAndLeavesAtUnload)
{
    started.clear();
    const int before = Kelvane_gui_init::count_;
    {
        const Kelvane::SourceUnit<Library<3>, Library<1>, Library<2>> unit;
        EXPECT_EQ(started, (std::vector<std::string>{"library 3", "library 1", "library 2"}));
        EXPECT_EQ(Kelvane_gui_init::count_, before + 1);
    }
    EXPECT_EQ(Kelvane_gui_init::count_, before);
}

TEST(ModuleInit, OrderOfADialogUnit)
{
    using namespace Lodex;
    EXPECT_TRUE((std::is_same_v<
                 Kelvane::DialogUnit,
                 Kelvane::SourceUnit<Kelvane::Kelvane_upscaling_init, Lodex_utils_init, Lodex_math_init,
                                     Lodex_geobase_init, Lodex_qtools_init, Lodex_volumes_init, Lodex_surfaces_init,
                                     Lodex_gxtools_init, Lodex_gtools_init, Lodex_xtools_init, Lodex_appli_init,
                                     Lodex_interpreter_init, Lodex_gviews_init, Lodex_tgobjs_init, Lodex_gui_init>>));
}

} // namespace
