#include "Layout.h"

#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <utility>

#include <unistd.h>

namespace fs = std::filesystem;
using layout::check_headers;
using layout::check_includes;
using layout::check_words;
using layout::Library;
using layout::project_rules;
using layout::Violation;

namespace {

using Messages = std::vector<std::string>;

Messages messages_of(const std::vector<Violation>& violations)
{
    Messages messages;
    for (const Violation& violation : violations)
        messages.push_back(violation.message());
    return messages;
}

std::string joined(const std::vector<Violation>& violations)
{
    std::string text;
    for (const Violation& violation : violations)
        text += violation.message() + '\n';
    return text;
}

/// A small source tree of its own in the folder for temporary files.
class PlantedTree {
public:
    PlantedTree(std::initializer_list<std::pair<const char*, const char*>> files)
        : root_(fs::temp_directory_path() / ("lodex_layout_" + std::to_string(getpid()) + "_" + test_name()))
    {
        fs::remove_all(root_);
        for (const auto& [name, text] : files) {
            fs::create_directories((root_ / name).parent_path());
            std::ofstream(root_ / name, std::ios::binary) << text;
        }
    }
    ~PlantedTree() { fs::remove_all(root_); }
    PlantedTree(const PlantedTree&) = delete;
    PlantedTree& operator=(const PlantedTree&) = delete;

    [[nodiscard]] Messages includes() const { return messages_of(check_includes(root_, project_rules())); }
    [[nodiscard]] Messages headers() const { return messages_of(check_headers(root_)); }
    [[nodiscard]] Messages words() const { return messages_of(check_words(root_)); }
    [[nodiscard]] const fs::path& root() const { return root_; }

private:
    static const char* test_name() { return testing::UnitTest::GetInstance()->current_test_info()->name(); }
    fs::path root_;
};

} // namespace

TEST(SourceTree, IncludeLinesKeepToTheArrows)
{
    const auto violations = check_includes(SOURCE_DIR, project_rules());
    EXPECT_TRUE(violations.empty()) << joined(violations);
}

TEST(SourceTree, HeadersAreGuardedAndInterfacesDocumented)
{
    const auto violations = check_headers(SOURCE_DIR);
    EXPECT_TRUE(violations.empty()) << joined(violations);
}

TEST(SourceTree, NoRemindersAndNoPathsOfOneMachine)
{
    const auto violations = check_words(SOURCE_DIR);
    EXPECT_TRUE(violations.empty()) << joined(violations);
}

TEST(SourceTree, IsReallyRead)
{
    // A tree without files would pass every check above.
    EXPECT_TRUE(fs::exists(fs::path(SOURCE_DIR) / "host/Lodex/utils/CString.h"));
    const std::vector<layout::Rule> none;
    EXPECT_GT(check_includes(SOURCE_DIR, none).size(), 100u) << "without rules every source file is a violation";
}

TEST(PlantedIncludes, ALawfulTreePasses)
{
    const PlantedTree tree{
        {"host/Lodex/utils/A.h", "#include <string>\n"},
        {"host/Lodex/qtools/B.h", "#include <Lodex/utils/A.h>\n#include <QWidget>\n"},
        {"frame/F.h", "#include <Lodex/qtools/B.h>\n#include <QDialog>\n"},
        {"sgresize/S.cpp", "#include \"frame/F.h\"\n#include <vector>\n#include \"sgresize/moc_S.cpp\"\n"},
        {"upscaling/kernels/K.h", "#include <tbb/parallel_for.h>\n#include <Eigen/Dense>\n#include <span>\n"},
        {"upscaling/U.cpp", "#include \"kernels/K.h\"\n"},
        {"lodex/utils/N.h", "#include <Lodex/utils/A.h>\n"},
        {"lodex/geobase/G.cpp", "#include <lodex/utils/N.h>\n#include \"lodex/utils/N.h\"\n"},
        {"lodex/volumes/verbs/V.cpp", "#include \"upscaling/kernels/K.h\"\n#include \"../V.h\"\n"},
        {"lodex/volumes/V.h", "  #  include  <map> // comment\n"},
        {"lodex/gviews/C.cpp", "#include <vtkActor.h>\n#include <lodex/volumes/V.h>\n"},
        {"apps/workbench/W.cpp", "#include \"sgresize/T.h\"\n#include <CLI/CLI.hpp>\n"},
        {"sgresize/T.h", ""},
        {"tests/support/M.h", "#include <gtest/gtest.h>\n"},
        {"tests/utils/T.cpp", "#include \"M.h\"\n#include <lodex/utils/N.h>\n"},
        {"tests/frame/T.cpp", "#include <QTest>\n#include \"frame/F.h\"\n"},
    };
    EXPECT_EQ(tree.includes(), Messages{});
}

TEST(PlantedIncludes, HostMayNotIncludeTheTreeNorQt)
{
    const PlantedTree tree{
        {"host/Lodex/utils/A.h", "#include <string>\n#include <lodex/utils/N.h>\n"},
        {"host/Lodex/volumes/B.h", "#include <QWidget>\n"},
        {"host/Kelvane/upscaling/C.h", "#include <tbb/parallel_for.h>\n"},
        {"lodex/utils/N.h", ""},
    };
    EXPECT_EQ(tree.includes(), (Messages{
                                   "host/Kelvane/upscaling/C.h:1: host must not use TBB: tbb/parallel_for.h",
                                   "host/Lodex/utils/A.h:2: host must not include lodex/utils/N.h",
                                   "host/Lodex/volumes/B.h:1: host must not use Qt: QWidget",
                               }));
}

TEST(PlantedIncludes, TheModuleSeesTheHostOnlyThroughItsInterfaces)
{
    const PlantedTree tree{
        {"lodex/utils/N.h", ""},
        {"upscaling/U.h", ""},
        {"frame/F.cpp", "\n#include \"lodex/utils/N.h\"\n"},
        {"sgresize/S.cpp", "#include <lodex/utils/N.h>\n"},
        {"flowunit/L.cpp", "#include \"upscaling/U.h\"\n"},
        {"propertyupscale/P.cpp", "#include <tbb/task.h>\n#include <vtkActor.h>\n#include <nlohmann/json.hpp>\n"},
    };
    EXPECT_EQ(tree.includes(), (Messages{
                                   "flowunit/L.cpp:1: flowunit must not include upscaling/U.h",
                                   "frame/F.cpp:2: frame must not include lodex/utils/N.h",
                                   "propertyupscale/P.cpp:1: propertyupscale must not use TBB: tbb/task.h",
                                   "propertyupscale/P.cpp:2: propertyupscale must not use VTK: vtkActor.h",
                                   "propertyupscale/P.cpp:3: propertyupscale must not use JSON: nlohmann/json.hpp",
                                   "sgresize/S.cpp:1: sgresize must not include lodex/utils/N.h",
                               }));
}

TEST(PlantedIncludes, FrameIsAtTheBottomOfTheModule)
{
    const PlantedTree tree{
        {"frame/F.h", "#include \"sgresize/S.h\"\n"},
        {"sgresize/S.h", ""},
    };
    EXPECT_EQ(tree.includes(), Messages{"frame/F.h:1: frame must not include sgresize/S.h"});
}

TEST(PlantedIncludes, UpscalingStandsOnTheHostAlone)
{
    const PlantedTree tree{
        {"upscaling/U.cpp", "#include <fmt/format.h>\n#include \"lodex/volumes/model/M.h\"\n"},
        {"upscaling/kernels/K.h", "#include <Lodex/volumes/SGrid.h>\n#include \"../U.h\"\n"},
        {"upscaling/U.h", ""},
        {"host/Lodex/volumes/SGrid.h", ""},
        {"lodex/volumes/model/M.h", ""},
    };
    EXPECT_EQ(tree.includes(),
              (Messages{
                  "upscaling/U.cpp:1: upscaling must not use fmt: fmt/format.h",
                  "upscaling/U.cpp:2: upscaling must not include lodex/volumes/model/M.h",
                  "upscaling/kernels/K.h:1: upscaling/kernels must not include host/Lodex/volumes/SGrid.h",
                  "upscaling/kernels/K.h:1: upscaling/kernels must not reach host/Lodex/volumes/SGrid.h",
                  "upscaling/kernels/K.h:2: upscaling/kernels must not include upscaling/U.h",
              }));
}

TEST(PlantedIncludes, TheHostsLibrariesHaveAnOrder)
{
    const PlantedTree tree{
        {"lodex/utils/A.h", "#include \"lodex/geobase/A.h\"\n"},
        {"lodex/geobase/A.h", "#include \"lodex/interpreter/A.h\"\n"},
        {"lodex/interpreter/A.h", "#include \"lodex/volumes/A.h\"\n"},
        {"lodex/volumes/model/A.h", "#include \"lodex/interpreter/B.h\"\n"},
        {"lodex/volumes/A.h", "#include \"lodex/gridio/A.h\"\n"},
        {"lodex/gridio/A.h", "#include <lodex/qtools/A.h>\n"},
        {"lodex/qtools/A.h", "#include <lodex/xtools/A.h>\n"},
        {"lodex/xtools/A.h", "#include <lodex/gviews/A.h>\n"},
        {"lodex/gviews/A.h", "#include <lodex/appli/A.h>\n"},
        {"lodex/appli/A.h", "#include \"apps/workbench/A.h\"\n"},
        {"lodex/interpreter/B.h", ""},
        {"apps/workbench/A.h", ""},
    };
    EXPECT_EQ(tree.includes(), (Messages{
                                   "lodex/appli/A.h:1: lodex/appli must not include apps/workbench/A.h",
                                   "lodex/geobase/A.h:1: lodex/geobase must not include lodex/interpreter/A.h",
                                   "lodex/gridio/A.h:1: lodex/gridio must not include lodex/qtools/A.h",
                                   "lodex/gviews/A.h:1: lodex/gviews must not include lodex/appli/A.h",
                                   "lodex/interpreter/A.h:1: lodex/interpreter must not include lodex/volumes/A.h",
                                   "lodex/qtools/A.h:1: lodex/qtools must not include lodex/xtools/A.h",
                                   "lodex/utils/A.h:1: lodex/utils must not include lodex/geobase/A.h",
                                   "lodex/volumes/A.h:1: lodex/volumes must not include lodex/gridio/A.h",
                                   "lodex/volumes/model/A.h:1: lodex/volumes/model must not include "
                                   "lodex/interpreter/B.h",
                                   "lodex/xtools/A.h:1: lodex/xtools must not include lodex/gviews/A.h",
                               }));
}

TEST(PlantedIncludes, NoQtInThePartWithoutQtNotEvenIndirectly)
{
    const PlantedTree tree{
        {"host/Lodex/utils/Innocent.h", "#include <Lodex/utils/Between.h>\n"},
        {"host/Lodex/utils/Between.h", "#include <Lodex/qtools/Window.h>\n"},
        {"host/Lodex/qtools/Window.h", "#include <string>\n#include <QWidget>\n"},
        {"lodex/utils/A.cpp", "#include <QString>\n"},
        {"lodex/volumes/B.cpp", "#include <map>\n#include <Lodex/qtools/Window.h>\n"},
        {"apps/batch/C.cpp", "#include <Lodex/utils/Innocent.h>\n"},
        {"tests/utils/D.cpp", "#include <QString>\n"},
        {"bench/E.cpp", "#include <vtkCell.h>\n"},
    };
    EXPECT_EQ(tree.includes(),
              (Messages{
                  "bench/E.cpp:1: bench must not use VTK: vtkCell.h",
                  "host/Lodex/utils/Between.h:1: host must not reach host/Lodex/qtools/Window.h -> <QWidget>",
                  "lodex/utils/A.cpp:1: lodex/utils must not use Qt: QString",
                  "lodex/volumes/B.cpp:2: lodex/volumes must not reach host/Lodex/qtools/Window.h -> <QWidget>",
                  "tests/utils/D.cpp:1: tests must not use Qt: QString",
              }));
}

TEST(PlantedIncludes, TheModelKnowsNoCatalogue)
{
    const PlantedTree tree{
        {"host/Lodex/volumes/Grid.h", "#include <Lodex/geobase/GObj.h>\n"},
        {"host/Lodex/geobase/GObj.h", ""},
        {"lodex/volumes/model/M.h", "#include <Lodex/volumes/Grid.h>\n"},
    };
    EXPECT_EQ(tree.includes(),
              Messages{"lodex/volumes/model/M.h:1: lodex/volumes/model must not reach host/Lodex/volumes/Grid.h -> "
                       "host/Lodex/geobase/GObj.h"});
}

TEST(PlantedIncludes, FoldersDoNotIncludeEachOtherInACircle)
{
    const PlantedTree tree{
        {"sgresize/A.h", "#include \"flowunit/B.h\"\n"},
        {"flowunit/B.h", "\n#include \"propertyupscale/C.h\"\n"},
        {"propertyupscale/C.h", ""},
        {"propertyupscale/D.h", "#include \"sgresize/E.h\"\n"},
        {"sgresize/E.h", ""},
        {"host/Lodex/utils/A.h", "#include <Lodex/math/B.h>\n"},
        {"host/Lodex/math/B.h", "#include <Lodex/utils/C.h>\n"},
        {"host/Lodex/utils/C.h", ""},
    };
    EXPECT_EQ(tree.includes(),
              (Messages{
                  "flowunit/B.h:2: folders include each other in a circle: "
                  "flowunit -> propertyupscale (flowunit/B.h:2) propertyupscale -> sgresize (propertyupscale/D.h:1) "
                  "sgresize -> flowunit (sgresize/A.h:1)",
                  "host/Lodex/math/B.h:1: folders include each other in a circle: host/Lodex/math -> host/Lodex/utils "
                  "(host/Lodex/math/B.h:1) host/Lodex/utils -> host/Lodex/math (host/Lodex/utils/A.h:1)",
              }));
}

TEST(PlantedIncludes, FilesThatAreNotThereAndUnknownLibraries)
{
    const PlantedTree tree{
        {"lodex/utils/A.cpp", "#include \"Missing.h\"\n#include <Lodex/utils/Missing.h>\n#include <curl/curl.h>\n"
                              "#include \"lodex/utils/Missing.h\"\n#include HEADER\n"},
        {"elsewhere/B.cpp", "#include <vector>\n"},
    };
    EXPECT_EQ(tree.includes(), (Messages{
                                   "elsewhere/B.cpp: the folder has no rule",
                                   "lodex/utils/A.cpp:1: Missing.h does not exist",
                                   "lodex/utils/A.cpp:2: Lodex/utils/Missing.h does not exist",
                                   "lodex/utils/A.cpp:3: <curl/curl.h> belongs to no known library",
                                   "lodex/utils/A.cpp:4: lodex/utils/Missing.h does not exist",
                                   "lodex/utils/A.cpp:5: the include line cannot be read",
                               }));
}

TEST(PlantedIncludes, CommentsBuildResultsAndOutputAreNoSources)
{
    const PlantedTree tree{
        {"lodex/utils/A.cpp", "// #include <QString>\n/* #include <QString>\n#include <QString>\n*/ #include <vector>\n"
                              "/* x */\nconst char* text = \"#include <QString>\";\n"},
        {"build/gen/B.cpp", "#include <QString>\n"},
        {"out/C.cpp", "#include <QString>\n"},
        {".git/D.cpp", "#include <QString>\n"},
    };
    EXPECT_EQ(tree.includes(), Messages{});
}

TEST(Libraries, AreToldApartByTheirHeaders)
{
    using layout::library_of;
    EXPECT_EQ(library_of("vector"), Library::Standard);
    EXPECT_EQ(library_of("cstdint"), Library::Standard);
    EXPECT_EQ(library_of("unistd.h"), Library::System);
    EXPECT_EQ(library_of("sys/stat.h"), Library::System);
    EXPECT_EQ(library_of("QWidget"), Library::Qt);
    EXPECT_EQ(library_of("QtWidgets/QtWidgets"), Library::Qt);
    EXPECT_EQ(library_of("queue"), Library::Standard);
    EXPECT_EQ(library_of("Queue"), Library::Unknown);
    EXPECT_EQ(library_of("Lodex/qtools/moc_X.cpp"), Library::Qt);
    EXPECT_EQ(library_of("vtkCellPicker.h"), Library::Vtk);
    EXPECT_EQ(library_of("oneapi/tbb/info.h"), Library::Tbb);
    EXPECT_EQ(library_of("Eigen/Sparse"), Library::Eigen);
    EXPECT_EQ(library_of("H5Cpp.h"), Library::Hdf5);
    EXPECT_EQ(library_of("hdf5.h"), Library::Hdf5);
    EXPECT_EQ(library_of("benchmark/benchmark.h"), Library::Benchmark);
    EXPECT_EQ(library_of("boost/any.hpp"), Library::Unknown);
}

TEST(Rules, TheLongestFolderCounts)
{
    const auto folder = [](const char* file) {
        const layout::Rule* rule = layout::rule_for(file, project_rules());
        return rule ? rule->folder : "none";
    };
    EXPECT_EQ(folder("lodex/volumes/model/Merge.cpp"), "lodex/volumes/model");
    EXPECT_EQ(folder("lodex/volumes/verbs/V.cpp"), "lodex/volumes");
    EXPECT_EQ(folder("lodex/volumes/modelling.cpp"), "lodex/volumes");
    EXPECT_EQ(folder("host/Lodex/qtools/X.h"), "host/Lodex/qtools");
    EXPECT_EQ(folder("tests/frame/X.cpp"), "tests/frame");
    EXPECT_EQ(folder("tests/volumes/X.cpp"), "tests");
    EXPECT_EQ(folder("framework/X.cpp"), "none");
}

TEST(PlantedHeaders, GuardsAndDocComments)
{
    const PlantedTree tree{
        {"lodex/utils/A.h", "#include <vector>\nclass NotPublic {\n};\n"},
        {"lodex/utils/A.cpp", "int x;\n"},
        {"host/Lodex/utils/B.h",
         "#pragma once\n\nclass Forward;\n\n/// Said.\nclass Documented {\n    class Inner {\n    };\n};\n"
         "class Undocumented {\n};\n\n/// Said, far off.\n\nstruct TooFar {\n};\n"},
        {"host/Lodex/utils/C.h",
         "#pragma once\n/// Said.\ntemplate <class T>\nclass OnTwoLines {\n};\n"
         "/// Said.\ntemplate <class T> class OnOneLine {\n};\ntemplate <class T> struct Bare : Base {\n};\n"
         "/**\n * Said.\n */\nstruct Block {\n};\n"},
    };
    EXPECT_EQ(tree.headers(),
              (Messages{
                  "host/Lodex/utils/B.h:10: the class has no doc comment: class Undocumented {",
                  "host/Lodex/utils/B.h:15: the class has no doc comment: struct TooFar {",
                  "host/Lodex/utils/C.h:9: the class has no doc comment: template <class T> struct Bare : Base {",
                  "lodex/utils/A.h: #pragma once is missing",
              }));
}

TEST(PlantedWords, RemindersAndPathsOfOneMachine)
{
    const std::string to_do = std::string("TO") + "DO", home = std::string("/") + "home/";
    const std::string text = "// " + to_do + ": later\nconst char* METHO" + to_do.substr(2) + ";\nx = \"" + home +
                             "me/x\"; see docs" + home + "\ndocs" + home + "page\n";
    const PlantedTree tree{
        {"lodex/utils/A.cpp", text.c_str()},
        {"docs/a.md", "fine\n"},
        {"run", (std::string("# ") + "FIX" + "ME\n").c_str()},
        {"build/x.cpp", to_do.c_str()},
        {"docs/picture.png", to_do.c_str()},
    };
    EXPECT_EQ(tree.words(), (Messages{
                                "lodex/utils/A.cpp:1: must not hold " + to_do,
                                "lodex/utils/A.cpp:3: must not hold the path " + home,
                                std::string("run:1: must not hold FIX") + "ME",
                            }));
}

TEST(PlantedWords, TheFolderOfTheTreeItself)
{
    const PlantedTree tree{{"docs/a.md", "fine\n"}};
    const std::string root = fs::weakly_canonical(tree.root()).generic_string();
    std::ofstream(tree.root() / "docs/b.md") << "see " << root << "/docs\n";
    EXPECT_EQ(tree.words(), Messages{"docs/b.md:1: must not hold the path " + root});
}
