// What a person waits for in the 3D view of a large grid: every change of the painted sections, a ragged threshold, a
// turn, a pick; beside it the time of one picture of the whole grid, which nothing should exceed.
//
// camera_bench [NI NJ NK] [rounds]                 needs a display: xvfb-run -a -s "-screen 0 1280x900x24" camera_bench
//
// Printed of each step: the longest and the mean time until the picture stands, the processor time, the faces that are
// drawn, and the peak of the resident memory as a multiple of what the process held before there was a view.

#include "Timing.h"

#include <lodex/gviews/CameraView.h>
#include <lodex/volumes/CornerPointGrid.h>
#include <lodex/volumes/model/Create.h>

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Style.h>

#include <QApplication>
#include <QElapsedTimer>

#include <sys/resource.h>

#include <fstream>
#include <string>

namespace {

double status_megabytes(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(key, 0) == 0)
            return std::atof(line.c_str() + key.size() + 1) / 1024;
    }
    return 0;
}

/// The peak from now on.
void forget_peak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

class Bench {
public:
    Bench(lodex::CameraView& view, double held) : view_(view), held_(held)
    {
        QObject::connect(&view, &lodex::CameraView::drawn, &view, [this] { drawn_ = true; });
    }

    /// Each change is drawn before the next one.
    void step(const char* name, int count, const std::function<void(int)>& change)
    {
        double longest = 0, sum = 0;
        forget_peak();
        const double cpu = bench::process_seconds();
        for (int n = 0; n < count; ++n) {
            QElapsedTimer timer;
            timer.start();
            change(n);
            drawn_ = false;
            view_.request_update();
            while (!drawn_)
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
            const double taken = 1e-9 * static_cast<double>(timer.nsecsElapsed());
            longest = std::max(longest, taken);
            sum += taken;
        }
        std::printf("%-34s longest %6.0f ms  mean %6.0f ms  processor %6.0f ms %9zu faces  peak %5.0f MB = %.2f\n",
                    name, 1e3 * longest, 1e3 * sum / count, 1e3 * (bench::process_seconds() - cpu) / count,
                    view_.face_count(), status_megabytes("VmHWM"), status_megabytes("VmHWM") / held_);
        std::fflush(stdout);
    }

private:
    lodex::CameraView& view_;
    double held_;
    bool drawn_ = false;
};

/// First and last section of each block of `step` sections along one axis, as a merge along it shows them.
std::string blocks(int axis, long size, long step)
{
    std::string triples;
    long count = 0;
    for (long first = 0; first < size; first += step) {
        for (const long section : {first, std::min(first + step, size) - 1}) {
            triples += " " + std::to_string(axis + 1) + " 1 " + std::to_string(section);
            ++count;
        }
    }
    return std::to_string(count) + triples;
}

} // namespace

int main(int argc, char** argv)
{
    lodex::CameraView::prepare_application();
    QApplication application(argc, argv);
    const auto number = [&](int position, std::int64_t otherwise) {
        return argc > position ? std::atoll(argv[position]) : otherwise;
    };
    const lodex::GridSize size{number(1, 250), number(2, 200), number(3, 200)};
    const int rounds = static_cast<int>(number(4, 3));
    lodex::CornerPointGrid* grid = lodex::add_grid("Field", lodex::make_example(size));
    const double held = status_megabytes("VmRSS");
    std::printf("example field of %lld cells, %.0f MB held\n", static_cast<long long>(grid->model().cells()), held);
    {
        lodex::CameraView view;
        Bench bench(view, held);
        bench.step("first picture", 1, [&](int) {
            view.resize(1100, 750);
            view.show();
            view.add_grid(grid, {.visible = true, .colour = lodex::ColourBy::of_property("PORO")});
            view.set_vertical_exaggeration(5);
        });
        const auto paint = [grid](const std::string& sections) {
            grid->style()->set_attribute("*sections", sections);
            grid->style()->update();
        };
        const auto turn = [&view](int) { view.set_direction(view.azimuth() + 3, view.elevation()); };
        bench.step("turn", 4 * rounds, turn);
        bench.step("other property", 2, [&](int n) {
            view.set_colour(grid, lodex::ColourBy::of_property(n == 0 ? "PERMX" : "PORO"));
        });
        for (int axis = 0; axis < 3; ++axis) {
            const std::string name = std::string("one section along ") + "IJK"[axis];
            bench.step(name.c_str(), rounds,
                       [&](int n) { paint("1 " + std::to_string(axis + 1) + " 1 " + std::to_string(20 + n)); });
        }
        for (const long step : {1L, 2L, 3L, 4L, 10L}) {
            const std::string name = "blocks of " + std::to_string(step) + ", I J K in turn";
            bench.step(name.c_str(), 3, [&](int n) {
                paint(blocks(n, static_cast<long>(size[static_cast<std::size_t>(n)]), step));
            });
        }
        bench.step("turn with painted blocks", 2 * rounds, turn);
        bench.step("pick", 1, [&](int) { view.pick_at({view.width() / 2.0, view.height() / 2.0}); });
        bench.step("further picks", rounds,
                   [&](int n) { view.pick_at({view.width() / 2.0 + n, view.height() / 2.0}); });
        bench.step("nothing painted", 1, [&](int) { paint(" 3 1 0 0 2 0 0 3 0 0"); });
        for (const double low : {0.05, 0.15, 0.25}) {
            lodex::CellFilter filter;
            filter.threshold = lodex::CellThreshold{"PORO", low, {}, {}};
            const std::string name = "PORO from " + std::to_string(low).substr(0, 4);
            bench.step(name.c_str(), 1, [&](int) { view.set_filter(grid, filter); });
            bench.step("  turn", rounds, turn);
            bench.step("  pick", 1, [&](int) { view.pick_at({view.width() / 2.0, view.height() / 2.0}); });
        }
        lodex::CellFilter codes;
        codes.threshold = lodex::CellThreshold{"FACIES", {}, {}, {2}};
        bench.step("FACIES 2", 1, [&](int) { view.set_filter(grid, codes); });
        bench.step("  turn", rounds, turn);
        lodex::CellFilter slices;
        slices.slices = lodex::CellFilter::Slices::Fence;
        bench.step("fence, moving", rounds, [&](int n) {
            for (std::size_t axis = 0; axis < 3; ++axis)
                slices.ranges[axis] = {{size[axis] / 2 + n, size[axis] / 2 + n}};
            view.set_filter(grid, slices);
        });
        bench.step("all cells again", 1, [&](int) { view.set_filter(grid, {}); });
    }
    Lodex::GeobaseLib::instance()->clear();
    return 0;
}
