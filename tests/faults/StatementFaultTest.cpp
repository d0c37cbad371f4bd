// Statements that run out of memory or are cancelled at any point: they fail with a message, the catalogue and the folder
// are as before, and the same statement then runs.

#include "lodex/gridio/GridFormat.h"
#include "lodex/gridio/LayerFile.h"
#include "lodex/gridio/ValueFile.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/volumes/Lodex_volumes_init.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

/// What operator new does while a statement runs. Counted are requests of [least, most) bytes.
struct Memory {
    std::atomic<bool> counts{false};
    std::atomic<std::size_t> least{0}, most{0};
    std::atomic<long> requests{0}, failing{0};
    std::atomic<std::size_t> bytes{0}; ///< asked for in all

    void start(std::size_t from, std::size_t to, long fail_at)
    {
        least = from;
        most = to;
        requests = 0;
        bytes = 0;
        failing = fail_at;
        counts = true;
    }
    long stop()
    {
        counts = false;
        return requests;
    }
    void note(std::size_t size)
    {
        if (!counts)
            return;
        bytes += size;
        if (size >= least && size < most && ++requests == failing)
            throw std::bad_alloc();
    }
} memory;

void* take(std::size_t size)
{
    memory.note(size);
    if (void* place = std::malloc(size > 0 ? size : 1))
        return place;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return take(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    memory.note(size);
    const auto step = static_cast<std::size_t>(alignment);
    if (void* place = std::aligned_alloc(step, (size + step - 1) / step * step + (size == 0 ? step : 0)))
        return place;
    throw std::bad_alloc();
}
// The standard library's own would do the same; a sanitizer brings others, which do not fit the deletes below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size, alignment);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* place) noexcept
{
    std::free(place);
}
void operator delete(void* place, std::size_t) noexcept
{
    std::free(place);
}
void operator delete(void* place, std::align_val_t) noexcept
{
    std::free(place);
}
void operator delete(void* place, std::size_t, std::align_val_t) noexcept
{
    std::free(place);
}

namespace {

namespace fs = std::filesystem;
using lodex::Interpreter;
using lodex::StatementStatus;

/// How many faults are tried for one statement, spread evenly; the environment variable FAULT_TRIES asks for more.
long tries_of(long usual)
{
    const char* wanted = std::getenv("FAULT_TRIES");
    return wanted ? std::max(usual, std::atol(wanted)) : usual;
}

/// Counts progress calls and stops at one of them.
class Stopper : public Lodex::ProgressSink {
public:
    Stopper() : former_(Lodex::ProgressTracer::set_sink(this)) {}
    ~Stopper() override { Lodex::ProgressTracer::set_sink(former_); }
    Stopper(const Stopper&) = delete;
    Stopper& operator=(const Stopper&) = delete;

    void begin(const Lodex::CString&) override {}
    bool progress(double) override { return ++calls != stop_at; }
    void end() override {}

    long calls = 0, stop_at = 0;

private:
    Lodex::ProgressSink* former_;
};

class StatementFaults : public testing::Test {
protected:
    StatementFaults()
        : folder(fs::temp_directory_path() /
                 ("statement_faults_" + std::to_string(getpid()) + "_" + testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        fs::create_directories(folder);
        Lodex::Lodex_volumes_init::initialize();
        make_catalogue();
        for (const char* ending : {"grdecl", "EGRID", "FEGRID", "roff", "roffasc", "bgrdecl"})
            run("lodex export sgrid Fine file \"" + file("in_" + std::string(ending) + "." + ending) + "\"");
        std::ofstream values(file("values.txt"));
        for (int cell = 0; cell < 12 * 10 * 8; ++cell)
            values << cell << '\n';
    }
    ~StatementFaults() override
    {
        Lodex::GeobaseLib::instance()->clear();
        Interpreter::instance().clear_journal();
        fs::remove_all(folder);
    }

    [[nodiscard]] std::string file(const std::string& name) const { return (folder / name).string(); }

    static void run(const std::string& text)
    {
        const auto results = Interpreter::instance().run(text);
        for (const auto& result : results)
            ASSERT_EQ(result.status, StatementStatus::Done) << result.message;
    }
    static void make_catalogue()
    {
        Lodex::GeobaseLib::instance()->clear();
        Interpreter::instance().clear_journal();
        run("lodex create example name Fine size 12+10+8 seed 3\n"
            "lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+1+2+3+4+7 copy_properties 1\n");
    }

    /// What the long verbs do on that catalogue; "out" files are new ones.
    [[nodiscard]] std::vector<std::string> statements() const
    {
        std::vector<std::string> all;
        for (const char* ending : {"grdecl", "EGRID", "FEGRID", "roff", "roffasc", "bgrdecl"})
            all.push_back("lodex import name Made file \"" + file("in_" + std::string(ending) + "." + ending) + "\"");
        for (const char* name : {"out.grdecl", "out.EGRID", "out.roff", "out.vtu", "out.bgrdecl"})
            all.push_back("lodex export sgrid Fine file \"" + file(name) + "\"");
        const std::string on = "lodex on SGrid Fine ";
        const std::string coarse = " Coarse Coarse mapper geometric create_region_if_problems 1 upscaler ";
        for (const std::string& statement :
             {"lodex report sgrid Fine file \"" + file("out.json") + "\"", std::string("lodex create sgrid name Made size 9+9+9 spacing 1+1+1"),
              std::string("lodex create example name Made size 12+10+8"),
              std::string("lodex sgrid_merge_multiple_sections name Made sgrid Fine direction \"first axis\" sections 0+1+4+9 "
                          "copy_properties 1 copy_regions 1 copy_fb_regions 1 region_mode 2 percentile 50 copy_style 1"),
              std::string("lodex sgrid_subdivide_multiple_sections name Made sgrid Fine direction \"vertical\" sections "
                          "1+2+proportional++3+1+parallel_to_base+0.5 copy_properties 1 copy_regions 1 copy_style 1 copy_fb_regions 1"),
              "lodex on SGrid Fine import_properties file \"" + file("in_EGRID.INIT") + "\"",
              on + "fill_property PORO lognormal 0.2+0.5", on + "fill_property NEW value 1",
              on + "set_property NEW file \"" + file("values.txt") + "\"", on + "define_region R property PORO min 0.1",
              on + "set_layers units A+B sizes 3+5", on + "flow_units property PORO method \"number of flow units\" value 3 name Made",
              on + "upscale_porosity fine_porosity PORO coarse_porosity NEW weight_using_volume 1" + coarse + "Arithmetic",
              on + "upscale_indicator fine_indicator FACIES coarse_indicator FACIES" + coarse + "\"Most probable\"",
              on + "upscale_permeability fine_Perm_I PERMX fine_Perm_J PERMX fine_Perm_K PERMX coarse_Perm_I KI coarse_Perm_J KJ "
                   "coarse_Perm_K KK" + coarse + "MixedPressureSolver",
              on + "compare_property PORO Coarse Coarse coarse_property PORO difference NEW",
              std::string("lodex rename object Coarse name \"A title of more than fifteen letters\""), std::string("lodex destroy objects Fine+Coarse")})
            all.push_back(statement);
        return all;
    }

    /// Everything in the catalogue and the journal, as text.
    static std::string fingerprint()
    {
        std::ostringstream text;
        text.precision(17);
        const auto hash = [&text](const auto& values) {
            std::uint64_t sum = 1469598103934665603u;
            for (const auto value : values)
                sum = (sum ^ std::hash<double>()(static_cast<double>(value))) * 1099511628211u;
            text << ' ' << values.size() << ':' << sum;
        };
        Lodex::COSNameList names;
        Lodex::GeobaseLib::instance()->names(Lodex::SGrid::static_type_id_(), names);
        for (const Lodex::CString& name : names) {
            lodex::CornerPointGrid& grid = *lodex::find_grid(name.str());
            const lodex::GridModel& model = grid.model();
            text << "grid " << name << ' ' << model.size[0] << ' ' << model.size[1] << ' ' << model.size[2];
            for (std::size_t i = 0; i < model.coord.size(); ++i)
                text << (i % 97 == 0 ? std::to_string(model.coord[i]) : std::string());
            std::vector<double> depths(model.zcorn.size());
            for (std::size_t i = 0; i < depths.size(); ++i)
                depths[i] = model.zcorn[i];
            hash(depths);
            hash(model.active);
            for (const auto& property : model.properties) {
                text << "\n property " << property.name << ' ' << property.unit;
                std::visit([&](const auto& values) { hash(values); }, property.values);
                const Lodex::Property* item = grid.property_db()->find(property.name);
                text << (item ? " listed" : " missing");
            }
            text << "\n properties " << grid.property_db()->nb_properties() << " regions " << grid.nb_regions();
            for (const auto& region : model.regions) {
                text << "\n region " << region.name << ' ' << region.model << (grid.find_region(region.name) ? " listed" : " missing");
                hash(region.flags);
            }
            for (const auto& layer : model.layers)
                text << "\n unit " << layer.unit << ' ' << layer.nb_k_cells << ' ' << layer.style;
            text << "\n faults " << model.faults.size() << " kept " << model.kept.size() << " records " << model.records.size();
            const auto* activities = grid.sgrid_activity_model();
            text << " activities " << (activities ? activities->activities().size() : 0);
            if (const Lodex::Style* style = grid.style())
                for (const auto& [attribute, value] : style->attributes())
                    text << "\n style " << attribute << '=' << value;
            text << '\n';
        }
        for (const std::string& statement : Interpreter::instance().journal())
            text << "journal " << statement << '\n';
        return text.str();
    }
    [[nodiscard]] std::string listing() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename().string() + " " + std::to_string(entry.file_size()));
        std::ranges::sort(names);
        std::string text;
        for (const std::string& name : names)
            text += name + "\n";
        return text;
    }
    void remove_output() const
    {
        for (const auto& entry : fs::directory_iterator(folder))
            if (entry.path().filename().string().starts_with("out"))
                fs::remove(entry.path());
    }

    fs::path folder;
};

} // namespace

TEST_F(StatementFaults, WithoutMemoryAStatementChangesNothingAndThenRuns)
{
    struct Range {
        std::size_t least, most;
        long tries; ///< requests that fail, spread over all of them
    };
    constexpr std::size_t page = 4096;
    for (const std::string& statement : statements()) {
        make_catalogue();
        const std::string before = fingerprint(), files_before = listing();
        run(statement);
        const std::string after = fingerprint(), files_after = listing();
        for (const Range& range : {Range{page, std::size_t(-1), 12}, Range{0, page, 16}}) {
            // The JSON library asks for memory where it lets go of some, and cannot be told that there is none.
            if (range.least == 0 && (statement.find(" report ") != std::string::npos || statement.find(" compare_") != std::string::npos))
                continue;
            make_catalogue();
            remove_output();
            memory.start(range.least, range.most, 0);
            auto whole = Interpreter::instance().run(statement);
            const long requests = memory.stop();
            ASSERT_EQ(whole[0].status, StatementStatus::Done);
            make_catalogue();
            remove_output();
            long failed = 0;
            const long tries = std::min(tries_of(range.tries), requests);
            for (long n = 0; n < tries; ++n) {
                const long at = 1 + (tries > 1 ? n * (requests - 1) / (tries - 1) : 0);
                memory.start(range.least, range.most, at);
                const auto results = Interpreter::instance().run(statement);
                memory.stop();
                const std::string what = statement + "\n request " + std::to_string(at) + " of " + std::to_string(requests) +
                                         " from " + std::to_string(range.least) + " bytes";
                ASSERT_EQ(results.size(), 1u) << what;
                if (results[0].status == StatementStatus::Done) {
                    // What failed was of no consequence, such as a line for a log; or the run needed fewer requests.
                    EXPECT_EQ(fingerprint(), after) << what;
                    EXPECT_EQ(listing(), files_after) << what;
                    make_catalogue();
                    remove_output();
                    continue;
                }
                ++failed;
                EXPECT_EQ(results[0].status, StatementStatus::Failed) << what;
                EXPECT_NE(results[0].message.find("memory"), std::string::npos) << what << ": " << results[0].message;
                EXPECT_EQ(fingerprint(), before) << what;
                // The last requests tell of a file that is in its place already.
                EXPECT_TRUE(listing() == files_before || listing() == files_after) << what << "\n" << listing();
                remove_output();
                if (HasFailure())
                    return;
            }
            EXPECT_TRUE(failed > 0 || requests == 0 || range.least > 0) << statement << ": " << tries;
            run(statement);
            EXPECT_EQ(fingerprint(), after) << statement;
            EXPECT_EQ(listing(), files_after) << statement;
        }
        remove_output();
    }
}

TEST_F(StatementFaults, CancelledAtAnyStepAStatementChangesNothingAndThenRuns)
{
    for (const std::string& statement : statements()) {
        make_catalogue();
        const std::string before = fingerprint(), files_before = listing();
        Stopper stopper;
        run(statement);
        const std::string after = fingerprint(), files_after = listing();
        const long steps = stopper.calls;
        EXPECT_GT(steps, 0) << statement;
        make_catalogue();
        remove_output();
        constexpr long most = 40;
        const long tries = std::min(steps, tries_of(most));
        for (long n = 0; n < tries; ++n) {
            stopper.calls = 0;
            stopper.stop_at = 1 + (tries > 1 ? n * (steps - 1) / (tries - 1) : 0);
            const auto results = Interpreter::instance().run(statement);
            const std::string what = statement + "\n step " + std::to_string(stopper.stop_at) + " of " + std::to_string(steps);
            ASSERT_EQ(results.size(), 1u) << what;
            if (results[0].status == StatementStatus::Done && stopper.calls < stopper.stop_at) {
                stopper.stop_at = 0;
                make_catalogue(); // parallel loops do not tell the same number of times
                remove_output();
                continue;
            }
            EXPECT_EQ(results[0].status, StatementStatus::Cancelled) << what;
            EXPECT_EQ(stopper.calls, stopper.stop_at) << what << ": nobody asks again";
            EXPECT_EQ(fingerprint(), before) << what;
            EXPECT_EQ(listing(), files_before) << what;
            if (HasFailure())
                return;
        }
        stopper.stop_at = 0;
        run(statement);
        EXPECT_EQ(fingerprint(), after) << statement;
        EXPECT_EQ(listing(), files_after) << statement;
        remove_output();
    }
}

TEST_F(StatementFaults, SmallFilesThatClaimHugeGridsAreRefusedAtOnce)
{
    const auto number = [](std::uint32_t value, bool big = true) {
        std::string bytes(4, '\0');
        for (std::size_t i = 0; i < 4; ++i)
            bytes[big ? 3 - i : i] = static_cast<char>(value >> (8 * i));
        return bytes;
    };
    const auto record = [&](std::string_view bytes) {
        return number(static_cast<std::uint32_t>(bytes.size())) + std::string(bytes) + number(static_cast<std::uint32_t>(bytes.size()));
    };
    const auto keyword = [&](const std::string& name, std::uint32_t count, const std::string& type, const std::string& data) {
        return record(name + number(count) + type) + (data.empty() ? std::string() : record(data));
    };
    const auto integers = [&](std::initializer_list<std::uint32_t> values, std::size_t count) {
        std::string bytes;
        for (const std::uint32_t value : values)
            bytes += number(value);
        return bytes.append(count * 4 - bytes.size(), '\0');
    };
    constexpr std::uint32_t n = 2000; // 8e9 cells, 64 GB of depths in 32 bits
    const std::string head = keyword("FILEHEAD", 100, "INTE", integers({3, 2007, 0, 0, 0, 0, 1}, 100)) +
                             keyword("GRIDHEAD", 100, "INTE", integers({1, n, n, n}, 100));
    const std::string claims = keyword("ZCORN   ", 0x7fffffff, "REAL", std::string(400, 'x'));
    std::string roff_text = "roff-asc\ntag filedata\nint byteswaptest 1\nchar filetype \"grid\"\nendtag\ntag dimensions\nint nX 2000\n"
                            "int nY 2000\nint nZ 2000\nendtag\n";
    const std::string one_line = "'Upper' 1 - 999999999\n";
    const std::vector<std::pair<std::string, std::string>> files{
        {"size.grdecl", "SPECGRID\n 2000 2000 2000 1 F /\nCOORD\n 24*1 /\nZCORN\n 8*1 /\n"},
        {"size_alone.grdecl", "SPECGRID\n 2000 2000 2000 1 F /\n"},
        {"repeats.grdecl", "SPECGRID\n 2000 2000 2000 1 F /\nZCORN\n 64000000000*1 /\n"},
        {"overflow.grdecl", "SPECGRID\n 3037000500 3037000500 3037000500 1 F /\nZCORN\n 9223372036854775807*1 /\n"},
        {"property.grdecl", "SPECGRID\n 2000 2000 2000 1 F /\nPORO\n 8000000000*0.1 /\n"},
        {"boxes.grdecl", "DIMENS\n 2000 2000 2000 /\nEQUALS\n PORO 0.1 /\n PERMX 1 /\n/\n"},
        {"thickness.grdecl", "DIMENS\n 2000 2000 2000 /\nDX\n 8000000000*1 /\n"},
        {"records.EGRID", head + claims},
        {"alone.INIT", keyword("INTEHEAD", 95, "INTE", integers({0, 0, 1, 0, 0, 0, 0, 0, n, n, n, 0x7fffffff}, 95)) +
                             keyword("PORO    ", 0x7fffffff, "REAL", std::string(400, 'x'))},
        {"old.GRID", keyword("DIMENS  ", 3, "INTE", integers({n, n, n}, 3)) + keyword("RADIAL  ", 1, "CHAR", "FALSE   ") +
                         keyword("COORDS  ", 4, "INTE", integers({1, 1, 1, 1}, 4))},
        {"binary.bgrdecl", keyword("SPECGRID", 5, "INTE", integers({n, n, n, 1, 0}, 5)) + claims},
        {"text.FEGRID", " 'FILEHEAD'         100 'INTE'\n"},
        {"grid.roffasc", roff_text + "tag zvalues\narray float zvalues 2000000000\n1 2 3\n"},
        {"lines.roffasc", roff_text + "tag cornerLines\narray float data 2000000000\n1 2 3\n"},
    };
    const auto resident = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss; // KiB, at its most
    };
    const long resident_before = resident();
    for (const auto& [name, text] : files) {
        std::ofstream(file(name), std::ios::binary) << text;
        lodex::ReadOptions options;
        options.max_bytes = std::uint64_t{1} << 30;
        memory.start(0, std::size_t(-1), 0);
        const auto start = std::chrono::steady_clock::now();
        std::string message;
        try {
            (void)lodex::GridFormats::for_reading(file(name)).read(file(name), options);
        } catch (const lodex::ModelError& error) {
            message = error.what();
        }
        memory.stop();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_NE(message.find(name), std::string::npos) << name << ": " << message;
        // The text reader takes addresses for as many values as the grid may have, and memory as they come.
        if (!name.ends_with(".grdecl")) {
            EXPECT_LT(memory.bytes, std::size_t{32} << 20) << name << ": " << message;
        }
        EXPECT_LT(seconds, 5) << name;
    }

    EXPECT_LT(resident() - resident_before, 256 * 1024);

    std::ofstream(file("few.txt")) << "1 2 3";
    std::ofstream(file("layers.txt")) << one_line;
    memory.start(0, std::size_t(-1), 0);
    EXPECT_THROW((void)lodex::read_values(file("few.txt"), 8'000'000'000), lodex::FileError);
    EXPECT_EQ(lodex::read_layer_file(file("layers.txt")).sizes, (std::vector<std::int64_t>{999999999}));
    memory.stop();
    EXPECT_LT(memory.bytes, std::size_t{8} << 20);
}
