#include <Lodex/utils/ProgressTracer.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <thread>
#include <vector>

using Lodex::CString;
using Lodex::ProgressSink;
using Lodex::ProgressTracer;

namespace {

/// Writes down what it is told and asks to stop once `stop_at` is reached.
class Record : public ProgressSink {
public:
    Record() : former_(ProgressTracer::set_sink(this)) {}
    ~Record() override { ProgressTracer::set_sink(former_); }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    void begin(const CString& title) override { titles.push_back(title.str()); }
    bool progress(double done) override
    {
        values.push_back(done);
        return done < stop_at;
    }
    void end() override { ++ends; }

    double stop_at = 2;
    std::vector<std::string> titles;
    std::vector<double> values;
    int ends = 0;

private:
    ProgressSink* former_;
};

using Values = std::vector<double>;

} // namespace

TEST(ProgressTracer, StepsRunFromZeroToOne)
{
    Record record;
    {
        ProgressTracer tracer("Merging", 4);
        for (int i = 0; i < 5; ++i)
            EXPECT_TRUE(tracer.next_step());
        EXPECT_FALSE(tracer.cancelled());
        EXPECT_EQ(record.ends, 0);
    }
    EXPECT_EQ(record.titles, std::vector<std::string>{"Merging"});
    EXPECT_EQ(record.values, (Values{0.25, 0.5, 0.75, 1, 1}));
    EXPECT_EQ(record.ends, 1);
}

TEST(ProgressTracer, FractionsAreKeptWithinRange)
{
    Record record;
    ProgressTracer tracer("x", 0);
    EXPECT_TRUE(tracer.set_done(-1));
    EXPECT_TRUE(tracer.set_done(0.3));
    EXPECT_TRUE(tracer.set_done(7));
    EXPECT_TRUE(tracer.set_done(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(tracer.next_step());
    EXPECT_EQ(record.values, (Values{0, 0.3, 1, 0, 1}));
}

TEST(ProgressTracer, OnlyTheOutermostIsShownButEveryOneAsks)
{
    Record record;
    {
        ProgressTracer outer("outer", 2);
        EXPECT_TRUE(outer.next_step());
        {
            ProgressTracer inner("inner", 10);
            EXPECT_TRUE(inner.next_step());
            EXPECT_TRUE(inner.set_done(0.9));
        }
        EXPECT_EQ(record.ends, 0);
        EXPECT_TRUE(outer.next_step());
    }
    EXPECT_EQ(record.titles, std::vector<std::string>{"outer"});
    EXPECT_EQ(record.values, (Values{0.5, 0.5, 0.5, 1}));
    EXPECT_EQ(record.ends, 1);
}

TEST(ProgressTracer, AWishToStopReachesInnerAndOuterAndStays)
{
    Record record;
    record.stop_at = 0.5;
    {
        ProgressTracer outer("outer", 4);
        EXPECT_TRUE(outer.next_step());
        record.stop_at = 0;
        {
            ProgressTracer inner("inner", 3);
            EXPECT_FALSE(inner.cancelled());
            EXPECT_FALSE(inner.next_step());
            EXPECT_TRUE(inner.cancelled());
        }
        EXPECT_TRUE(outer.cancelled());
        record.stop_at = 2;
        EXPECT_FALSE(outer.next_step());
        ProgressTracer later("later", 1);
        EXPECT_TRUE(later.cancelled());
        EXPECT_FALSE(later.set_done(0.1));
    }
    EXPECT_EQ(record.values.size(), 2u) << "nobody is asked again after a stop";
    ProgressTracer next("next", 1);
    EXPECT_FALSE(next.cancelled());
    EXPECT_TRUE(next.next_step());
}

TEST(ProgressTracer, WithoutASinkWorkGoesOn)
{
    ProgressTracer tracer("x", 2);
    EXPECT_TRUE(tracer.next_step());
    EXPECT_FALSE(tracer.cancelled());
}

TEST(ProgressTracer, ASinkThatIsTakenAwayHearsNoMore)
{
    Record outer_record;
    ProgressTracer tracer("x", 4);
    EXPECT_TRUE(tracer.next_step());
    {
        Record record;
        EXPECT_TRUE(tracer.next_step());
        EXPECT_TRUE(record.values.empty()) << "it never heard the beginning";
    }
    EXPECT_TRUE(tracer.next_step());
    EXPECT_EQ(outer_record.values, (Values{0.25, 0.75}));
}

TEST(ProgressTracer, EachThreadHasItsOwnWork)
{
    Record record;
    record.stop_at = 0;
    ProgressTracer tracer("main", 2);
    EXPECT_FALSE(tracer.next_step());
    bool cancelled = true;
    std::thread([&cancelled] {
        const ProgressTracer other("other", 2);
        cancelled = other.cancelled();
    }).join();
    EXPECT_FALSE(cancelled);
    EXPECT_TRUE(tracer.cancelled());
}
