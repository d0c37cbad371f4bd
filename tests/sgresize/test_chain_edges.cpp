// Chains of commands that meet with something: a window that goes meanwhile, names that are taken.

#include "GridDialogTest.h"

#include "lodex/appli/QtProgressSink.h"

#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include <QTimer>

#include <chrono>

namespace {

using Texts = std::vector<std::string>;

std::size_t activities_of(const std::string& name)
{
    const auto* grid = lodex::find_grid(name);
    const auto* model = grid ? grid->sgrid_activity_model() : nullptr;
    return model ? model->activities().size() : 0;
}

/// Shows progress in its window for as long as it lives, and does something as soon as the window is there.
class ShownProgress {
public:
    template <class Deed>
    ShownProgress(QObject* context, Deed deed)
        : sink_(std::chrono::milliseconds(0)), former_(Lodex::ProgressTracer::set_sink(&sink_))
    {
        QTimer::singleShot(0, context, [this, deed] {
            shown_ = sink_.window() != nullptr;
            deed();
        });
    }
    ~ShownProgress() { Lodex::ProgressTracer::set_sink(former_); }
    ShownProgress(const ShownProgress&) = delete;
    ShownProgress& operator=(const ShownProgress&) = delete;

    [[nodiscard]] bool shown() const { return shown_; }

private:
    lodex::QtProgressSink sink_;
    Lodex::ProgressSink* former_;
    bool shown_ = false;
};

template <class Fixture> class ChainEdges : public Fixture {
protected:
    ChainEdges() { lodex::add_grid("example", lodex::make_example({12, 10, 8})); }

    /// The window goes from below the first command, on Apply or on OK.
    void close_meanwhile(const char* button)
    {
        this->open("example");
        this->name("made");
        for (const AxisTab axis : {TabI, TabJ, TabK})
            this->tick(axis);
        this->row(TabK).set_run(1, 2); // of one unit
        this->sent();
        {
            const ShownProgress progress(this->dialog, [this] {
                this->shell->close();
                QCoreApplication::processEvents();
                QCoreApplication::sendPostedEvents();
                EXPECT_TRUE(this->dialog);
            });
            this->press(button);
            EXPECT_TRUE(progress.shown());
        }
        run_deferred_deletes();
        EXPECT_TRUE(this->shell.isNull());
        EXPECT_TRUE(this->dialog.isNull());
        EXPECT_EQ(this->sent().size(), 5U);
        EXPECT_EQ(this->errors(), Texts{});
        EXPECT_TRUE(this->exists("made"));
        EXPECT_EQ(this->temporaries(), Texts{});
        EXPECT_EQ(activities_of("made"), 1U);
        EXPECT_EQ(activities_of("example"), 1U);
    }
};

class UpscaleEdges : public ChainEdges<UpscaleDialogTest> {
};
class DownscaleEdges : public ChainEdges<DownscaleDialogTest> {
};

TEST_F(UpscaleEdges, TheHostMayCloseTheWindowMeanwhile)
{
    close_meanwhile("apply_button");
}

TEST_F(DownscaleEdges, TheHostMayCloseTheWindowMeanwhile)
{
    close_meanwhile("ok_button");
}

TEST_F(DownscaleEdges, WhatWasMadeFromAGridOfATemporarysNameIsNotRecorded)
{
    add_box("G", {4, 4, 4});
    // As long as the dialog's own would be, but from another section.
    ASSERT_TRUE(lodex::Interpreter::instance()
                    .run("lodex sgrid_subdivide_multiple_sections name _tmpobj_N_down1 sgrid G direction "
                         "\"first axis\" sections 3+1+proportional+")
                    .front()
                    .message.empty());
    open("G");
    name("N");
    tick(TabI);
    row(TabI).set_division(1, 1, 2, 0, "");
    tick(TabK);
    row(TabK).set_division(1, 1, 2, 0, "");
    press("apply_button");
    EXPECT_TRUE(exists("N")); // the host's own business: it was told to use that grid
    EXPECT_EQ(activities_of("N"), 0U);
    EXPECT_EQ(activities_of("G"), 0U);
    ASSERT_FALSE(errors().empty());
    EXPECT_EQ(errors().back(), "Could not create Downgridding activity\n");
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "N");
    EXPECT_EQ(temporaries(), Texts{});
}

TEST_F(DownscaleEdges, TheSameRowsUnderATakenNameAreNotRecordedTwice)
{
    add_box("G", {4, 4, 4});
    open("G");
    name("N");
    tick(TabI);
    press("apply_button");
    ASSERT_EQ(activities_of("N"), 1U);
    name("N");
    press("apply_button");
    EXPECT_EQ(activities_of("N"), 1U);
    EXPECT_EQ(activities_of("G"), 1U);
    EXPECT_EQ(errors().back(), "Could not create Downgridding activity\n");
}

} // namespace
