#include "Layout.h"

namespace layout {

namespace {

using enum Library;
using Folders = std::vector<std::string>;
using Libraries = std::set<Library>;

const Libraries widget_toolkit{Qt, Vtk};
const Libraries every_library{Standard, System, Qt,   Vtk,  Tbb,  Eigen,
                              Hdf5,     Deflate, CommandLine, Json, Text, Test, Benchmark};

Libraries without(Libraries all, const Libraries& some)
{
    for (const Library library : some)
        all.erase(library);
    return all;
}

/// A library of the embedded host that knows no Qt: those below it, the interfaces, and what it needs from outside.
Rule qt_free(std::string folder, Folders below, Libraries libraries, Folders never = {})
{
    below.emplace_back("host");
    libraries.insert({Standard, System, Text});
    return {std::move(folder), std::move(below), std::move(libraries), std::move(never), widget_toolkit};
}

std::vector<Rule> make_rules()
{
    const Folders no_qt_host{"lodex/utils", "lodex/geobase", "lodex/interpreter", "lodex/volumes", "lodex/gridio",
                             "lodex/project"};
    const auto with = [](Folders folders, const Folders& more) {
        folders.insert(folders.end(), more.begin(), more.end());
        return folders;
    };

    std::vector<Rule> rules{
        // Interfaces
        {"host", {}, {Standard}, {}, widget_toolkit},
        {"host/Lodex/qtools", {"host"}, {Standard, Qt}, {}, {Vtk}},
        {"host/Lodex/xtools", {"host"}, {Standard, Qt}, {}, {Vtk}},

        // The module
        {"frame", {"host"}, {Standard, Qt}, {}, {Vtk}},
        {"sgresize", {"host", "frame", "flowunit", "propertyupscale"}, {Standard, Qt}, {}, {Vtk}},
        {"flowunit", {"host", "frame", "sgresize", "propertyupscale"}, {Standard, Qt}, {}, {Vtk}},
        {"propertyupscale", {"host", "frame", "sgresize", "flowunit"}, {Standard, Qt}, {}, {Vtk}},

        // The upscaling library; its kernels know spans, not grids
        {"upscaling", {"host"}, {Standard, Tbb, Eigen}, {}, widget_toolkit},
        {"upscaling/kernels",
         {"host/Lodex/utils", "host/Kelvane"},
         {Standard, Tbb, Eigen},
         {"host/Lodex/geobase", "host/Lodex/volumes"},
         widget_toolkit},

        // The embedded host without Qt
        qt_free("lodex/utils", {}, {}),
        qt_free("lodex/geobase", {"lodex/utils"}, {}),
        qt_free("lodex/interpreter", {"lodex/utils", "lodex/geobase"}, {Json}),
        qt_free("lodex/volumes/model", {"lodex/utils", "upscaling/kernels"}, {Tbb, Eigen}, {"host/Lodex/geobase", "host/Lodex/interpreter"}),
        qt_free("lodex/volumes", {"lodex/utils", "lodex/geobase", "lodex/interpreter", "upscaling"},
                {Tbb, Eigen, Json}),
        qt_free("lodex/gridio", {"lodex/utils", "lodex/geobase", "lodex/interpreter", "lodex/volumes", "upscaling"},
                {Tbb, Json}),
        qt_free("lodex/project", {"lodex/utils", "lodex/geobase", "lodex/interpreter", "lodex/volumes"},
                {Tbb, Json, Hdf5, Deflate}),

        // The embedded host's windows
        {"lodex/qtools", with(no_qt_host, {"host"}), {Standard, System, Text, Qt}, {}, {Vtk}},
        {"lodex/xtools", with(no_qt_host, {"host", "lodex/qtools"}), {Standard, System, Text, Qt}, {}, {Vtk}},
        {"lodex/gviews",
         with(no_qt_host, {"host", "lodex/qtools", "lodex/xtools"}),
         {Standard, System, Text, Tbb, Qt, Vtk},
         {},
         {}},
        {"lodex/appli",
         with(no_qt_host, {"host", "lodex/qtools", "lodex/xtools", "lodex/gviews"}),
         {Standard, System, Text, Json, Tbb, Qt, Vtk},
         {},
         {}},

        // Programs
        {"apps/batch",
         with(no_qt_host, {"host", "upscaling"}),
         {Standard, System, Text, Tbb, CommandLine, Json},
         {},
         widget_toolkit},
        {"apps/workbench",
         {"host", "lodex", "upscaling", "frame", "sgresize", "flowunit", "propertyupscale"},
         {Standard, System, Text, Tbb, CommandLine, Json, Qt, Vtk},
         {},
         {}},
        {"bench", {""}, without(every_library, {Qt, Vtk, Test}), {}, widget_toolkit},
        {"bench/camera", {""}, without(every_library, {Test}), {}, {}},

        // Programs on the installed libraries: interfaces and dialogs alone
        {"examples", {"host", "sgresize", "flowunit", "propertyupscale"}, {Standard, Qt}, {"lodex"}, {Vtk}},

        // What builds with the thread sanitizer use in place of a library
        {"cmake", {}, {Standard}, {}, widget_toolkit},

        // Tests see everything; those of the part without Qt must build without it
        {"tests", {""}, without(every_library, widget_toolkit), {}, widget_toolkit},
        {"tests/support", {"host"}, {Standard, Qt, Test}, {}, {}},
    };
    for (const char* folder : {"qtools", "xtools", "gviews", "gviews_camera", "appli", "frame", "sgresize", "flowunit",
                               "propertyupscale", "workbench", "workbench_camera", "guide", "guide_pictures"})
        rules.push_back({std::string("tests/") + folder, {""}, every_library, {}, {}});
    // An independent reader of what the exporter writes.
    rules.push_back({"tests/gridio_vtk", {""}, without(every_library, {Qt}), {}, {Qt}});
    return rules;
}

} // namespace

const std::vector<Rule>& project_rules()
{
    static const std::vector<Rule> rules = make_rules();
    return rules;
}

} // namespace layout
