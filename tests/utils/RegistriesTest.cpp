#include <Lodex/math/Lodex_math_init.h>
#include <Lodex/utils/FactoryLib.h>
#include <Lodex/utils/Lodex_utils_init.h>
#include <Lodex/utils/PluginManager.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Lodex::COSNameList;
using Lodex::CString;
using Lodex::Factory;
using Lodex::FactoryLib;
using Lodex::NamingLib;
using Lodex::PluginManager;

namespace {

class PathFactory : public Factory {
public:
    explicit PathFactory(const char* path, int* deaths = nullptr) : path_(path), deaths_(deaths) {}
    ~PathFactory() override
    {
        if (deaths_)
            ++*deaths_;
    }
    [[nodiscard]] CString path() const override { return path_; }

private:
    CString path_;
    int* deaths_;
};

std::vector<std::string> listed(const char* domain, const char* family)
{
    COSNameList names;
    names.append("stale");
    FactoryLib::instance()->list(domain, family, names);
    std::vector<std::string> result;
    for (const CString& name : names)
        result.push_back(name.str());
    return result;
}

using Names = std::vector<std::string>;

} // namespace

TEST(FactoryLib, ListsAFamilyInOrderOfRegistration)
{
    FactoryLib* lib = FactoryLib::instance();
    for (const char* path : {"Por/Mean", "Por/Sum", "Perm/Mean", "Por/Max", "Porous/Mean", "Mean"})
        lib->add("list domain", std::make_unique<PathFactory>(path));
    EXPECT_EQ(listed("list domain", "Por"), (Names{"Por/Mean", "Por/Sum", "Por/Max"}));
    EXPECT_EQ(listed("list domain", "Por/"), (Names{"Por/Mean", "Por/Sum", "Por/Max"}));
    EXPECT_EQ(listed("list domain", "Perm"), Names{"Perm/Mean"});
    EXPECT_EQ(listed("list domain", "").size(), 6u);
    EXPECT_EQ(listed("list domain", "Nothing"), Names{});
    EXPECT_EQ(listed("no such domain", ""), Names{});
}

TEST(FactoryLib, FindsByWholePathThenByLastComponents)
{
    FactoryLib* lib = FactoryLib::instance();
    for (const char* path : {"Por/Mean", "Perm/Mean", "Perm/Local/Mean", "Mean"})
        lib->add("find domain", std::make_unique<PathFactory>(path));
    const auto found = [lib](const char* name) {
        const Factory* factory = lib->find("find domain", name);
        return factory ? factory->path() : CString("none");
    };
    EXPECT_EQ(found("Perm/Mean"), CString("Perm/Mean"));
    EXPECT_EQ(found("Mean"), CString("Mean"));
    EXPECT_EQ(found("Local/Mean"), CString("Perm/Local/Mean"));
    EXPECT_EQ(found("ean"), CString("none"));
    EXPECT_EQ(found(""), CString("none"));
    EXPECT_EQ(lib->find("another domain", "Mean"), nullptr);

    lib->add("find domain 2", std::make_unique<PathFactory>("Por/Mean"));
    lib->add("find domain 2", std::make_unique<PathFactory>("Perm/Mean"));
    EXPECT_EQ(lib->find("find domain 2", "Mean")->path(), CString("Por/Mean")) << "the first registered";
}

TEST(FactoryLib, SamePathReplacesInPlace)
{
    FactoryLib* lib = FactoryLib::instance();
    int deaths = 0;
    lib->add("replace domain", std::make_unique<PathFactory>("A/x", &deaths));
    lib->add("replace domain", std::make_unique<PathFactory>("A/y", &deaths));
    auto replacement = std::make_unique<PathFactory>("A/x");
    const Factory* raw = replacement.get();
    lib->add("replace domain", std::move(replacement));
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(lib->find("replace domain", "A/x"), raw);
    EXPECT_EQ(listed("replace domain", "A"), (Names{"A/x", "A/y"}));
    lib->add("replace domain", nullptr);
    EXPECT_EQ(listed("replace domain", "A").size(), 2u);
}

TEST(NamingLib, GivenNameElseLastComponent)
{
    NamingLib* lib = NamingLib::instance();
    EXPECT_EQ(lib->display_name("naming/DiagTensor"), CString("DiagTensor"));
    lib->set_display_name("naming/DiagTensor", "Diagonal tensor");
    EXPECT_EQ(lib->display_name("naming/DiagTensor"), CString("Diagonal tensor"));
    EXPECT_EQ(lib->display_name("other/DiagTensor"), CString("DiagTensor"));
    EXPECT_EQ(lib->display_name("plain"), CString("plain"));
}

TEST(PluginManager, VenlacoreIsThereUntilSwitchedOff)
{
    PluginManager* manager = PluginManager::instance();
    EXPECT_TRUE(manager->is_loaded("Venlacore"));
    EXPECT_FALSE(manager->is_loaded("venlacore"));
    EXPECT_FALSE(manager->is_loaded("Other"));
    manager->set_loaded("Venlacore", false);
    EXPECT_FALSE(manager->is_loaded("Venlacore"));
    manager->set_loaded("Venlacore", true);
    manager->set_loaded("Other", true);
    EXPECT_TRUE(manager->is_loaded("Other"));
    manager->set_loaded("Other", false);
    EXPECT_TRUE(manager->is_loaded("Venlacore"));
}

namespace {

struct CountedLibrary : Lodex::LibraryInit<CountedLibrary> {
    static void start() { ++starts; }
    static inline int starts = 0;
};

} // namespace

TEST(LibraryInit, StartsOnceForTheFirstOfOverlappingUsers)
{
    EXPECT_EQ(CountedLibrary::count(), 0);
    CountedLibrary::initialize();
    CountedLibrary::initialize();
    EXPECT_EQ(CountedLibrary::starts, 1);
    EXPECT_EQ(CountedLibrary::count(), 2);
    CountedLibrary::terminate();
    CountedLibrary::terminate();
    EXPECT_EQ(CountedLibrary::count(), 0);
}

TEST(LibraryInit, UtilsAndMathComeUp)
{
    Lodex::Lodex_utils_init::initialize();
    Lodex::Lodex_math_init::initialize();
    EXPECT_EQ(Lodex::Lodex_utils_init::count(), 1);
    EXPECT_EQ(Lodex::Lodex_math_init::count(), 1);
    EXPECT_TRUE(PluginManager::instance()->is_loaded("Venlacore"));
    Lodex::Lodex_utils_init::terminate();
    Lodex::Lodex_math_init::terminate();
    EXPECT_EQ(Lodex::Lodex_utils_init::count(), 0);
}
