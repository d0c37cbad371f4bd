#include "lodex/interpreter/Interpreter.h"

#include "MessageList.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/CommandExecuter.h>
#include <Lodex/interpreter/Lodex_interpreter_init.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/ProgressTracer.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <sstream>

using namespace lodex;

namespace {

/// An object with nothing in it.
class Thing : public Lodex::GObj {
public:
    explicit Thing(const std::string& name) : GObj(name) {}
    static const Lodex::TypeId& type()
    {
        static const Lodex::TypeId id("Thing", nullptr);
        return id;
    }
    [[nodiscard]] const Lodex::TypeId& type_id() const override { return type(); }
    void name_list(const Lodex::CString&, Lodex::COSNameList& names) const override { names.clear(); }
    [[nodiscard]] Lodex::Style* style() const override { return nullptr; }
};

/// What the test verbs were called with, last one first.
struct Seen {
    std::string verb, object, text, list, name;
    double real = 0;
    bool has_text = false;
};
Seen seen;

void remember(Call& call)
{
    seen = {};
    seen.verb = call.verb().name;
    seen.object = call.object() ? call.object()->name().str() : "";
    seen.text = call.text("text");
    seen.has_text = call.has("text");
    seen.real = call.real("real");
    seen.list = call.text("list");
    seen.name = call.text("name");
}

const std::vector<Keyword> many{{.name = "text", .kind = ValueKind::Text, .may_be_empty = true, .default_value = "plain"},
                                {.name = "real", .kind = ValueKind::Real, .min = 0, .max = 10},
                                {.name = "flag", .kind = ValueKind::Flag},
                                {.name = "choice", .kind = ValueKind::Choice, .choices = {"one", "two words"}},
                                {.name = "list", .kind = ValueKind::IntegerList, .min = -1},
                                {.name = "reals", .kind = ValueKind::RealList},
                                {.name = "thing", .kind = ValueKind::Object, .object_type = "Thing"},
                                {.name = "name", .kind = ValueKind::NewName}};

const VerbRegistration take{{.name = "take", .summary = "takes", .keywords = many, .run = remember}};
const VerbRegistration make{{.name = "make thing",
                             .summary = "makes",
                             .keywords = {{.name = "name", .kind = ValueKind::NewName, .required = true},
                                          {.name = "twin", .kind = ValueKind::NewName}},
                             .run = [](Call& call) {
                                 Lodex::GeobaseLib::instance()->add(std::make_unique<Thing>(call.text("name")));
                             }}};
const VerbRegistration poke{{.name = "poke",
                             .object_type = "Thing",
                             .summary = "pokes",
                             .keywords = {{.name = "how", .kind = ValueKind::Text, .positional = true},
                                          {.name = "text", .kind = ValueKind::Text}},
                             .run = remember}};
const VerbRegistration poke_hard{{.name = "poke hard", .object_type = "Thing", .summary = "pokes hard", .run = remember}};
const VerbRegistration fail_verb{{.name = "break",
                                  .summary = "fails",
                                  .keywords = {{.name = "text", .kind = ValueKind::Text}},
                                  .run = [](Call& call) { call.fail("it broke", "text"); }}};
const VerbRegistration wait_verb{{.name = "wait",
                                  .summary = "lasts until it is stopped",
                                  .run = [](Call& call) {
                                      while (call.progress(0.5)) {
                                      }
                                      throw Cancelled{};
                                  }}};
const VerbRegistration nest{{.name = "nest", .summary = "submits", .journalled = false, .run = [](Call& call) {
                                 const auto results = Interpreter::instance().run("lodex take");
                                 call.answer(results.at(0).message);
                             }}};

class Interpretation : public testing::Test {
protected:
    Interpretation()
    {
        Lodex::Lodex_interpreter_init::initialize();
        Lodex::GeobaseLib::instance()->clear();
        Interpreter::instance().clear_journal();
        seen = {};
    }
    ~Interpretation() override { Lodex::GeobaseLib::instance()->clear(); }

    static void add(const std::string& name) { Lodex::GeobaseLib::instance()->add(std::make_unique<Thing>(name)); }
    static bool exists(const std::string& name) { return Lodex::GeobaseLib::instance()->find(name, Thing::type()); }

    static bool run(const std::string& text)
    {
        const auto results = Interpreter::instance().run(text);
        return std::ranges::all_of(results, [](const auto& r) { return r.status == StatementStatus::Done; });
    }
    /// The first line of the failure's message.
    static std::string error(const std::string& text)
    {
        for (const auto& result : Interpreter::instance().run(text)) {
            if (!result.message.empty())
                return result.message.substr(0, result.message.find('\n'));
        }
        return "no error";
    }

    MessageList messages;
};

} // namespace

TEST_F(Interpretation, TakesValuesUpToTheNextKeyword)
{
    ASSERT_TRUE(run("lodex take text some words here real 2.5 list 0+1++3+"));
    EXPECT_EQ(seen.text, "some words here");
    EXPECT_DOUBLE_EQ(seen.real, 2.5);
    EXPECT_EQ(seen.list, "0+1++3+");
}

TEST_F(Interpretation, AKeywordThatWasGivenIsAnOrdinaryWordLater)
{
    ASSERT_TRUE(run("lodex take real 1 text real text"));
    EXPECT_EQ(seen.text, "real text");
}

TEST_F(Interpretation, AQuotedKeywordIsText)
{
    ASSERT_TRUE(run("lodex take text \"real\""));
    EXPECT_EQ(seen.text, "real");
}

TEST_F(Interpretation, EmptyValuesAreTakenWhereDeclared)
{
    ASSERT_TRUE(run("lodex take text real 1"));
    EXPECT_TRUE(seen.has_text);
    EXPECT_EQ(seen.text, "");
    ASSERT_TRUE(run("lodex take text \"\" real 1"));
    EXPECT_EQ(seen.text, "");
    ASSERT_TRUE(run("lodex take real 1"));
    EXPECT_FALSE(seen.has_text);
    EXPECT_EQ(seen.text, "plain");
    EXPECT_EQ(error("lodex take real text x"), "1:17: \"real\" has no value");
}

TEST_F(Interpretation, ObjectsAreTheLongestRunOfWordsThatNamesOne)
{
    add("A");
    add("A poke");
    ASSERT_TRUE(run("lodex on Thing A poke poke gently text x"));
    EXPECT_EQ(seen.object, "A poke");
    ASSERT_TRUE(run("lodex on Thing A poke gently"));
    EXPECT_EQ(seen.object, "A");
    ASSERT_TRUE(run("lodex on Thing \"A\" poke"));
    EXPECT_EQ(seen.object, "A");
}

TEST_F(Interpretation, TheWordOnMayBeLeftOut)
{
    add("Two Words");
    ASSERT_TRUE(run("lodex Thing Two Words poke"));
    EXPECT_EQ(seen.object, "Two Words");
}

TEST_F(Interpretation, TheLongestVerbWins)
{
    add("A");
    ASSERT_TRUE(run("lodex on Thing A poke hard"));
    EXPECT_EQ(seen.verb, "poke hard");
}

TEST_F(Interpretation, SaysWhatIsWrongAndWhere)
{
    add("A");
    add("B C");
    const std::vector<std::pair<std::string, std::string>> cases{
        {"hello", "1:1: a statement begins with \"lodex\", not with \"hello\""},
        {"lodex", "1:1: expected a verb behind \"lodex\""},
        {"lodex nothing", "1:7: there is no verb \"nothing\""},
        {"lodex make", "1:7: there is no verb \"make\" alone; there is \"make thing\""},
        {"lodex Take", "1:7: there is no verb \"Take\""},
        {"lodex take colour red", "1:12: \"take\" has no keyword \"colour\"; usage: "},
        {"lodex take Text x", "1:12: \"take\" has no keyword \"Text\"; usage: "},
        {"lodex make thing", "1:1: \"make thing\" lacks \"name\"; usage: lodex make thing name NAME [twin NAME]"},
        {"lodex take real x", "1:17: \"real\" is \"x\"; expected a finite number"},
        {"lodex take real nan", "1:17: \"real\" is \"nan\"; expected a finite number"},
        {"lodex take real 1,5", "1:17: \"real\" is \"1,5\"; expected a finite number"},
        {"lodex take real 11", "1:17: \"real\" is \"11\"; expected at most 10"},
        {"lodex take real -1", "1:17: \"real\" is \"-1\"; expected at least 0"},
        {"lodex take flag yes", "1:17: \"flag\" is \"yes\"; expected 0 or 1"},
        {"lodex take choice two", "1:19: \"choice\" is \"two\"; expected one of \"one\", \"two words\""},
        {"lodex take list 0+x", "1:17: \"list\" holds \"x\"; expected whole numbers joined by +"},
        {"lodex take list 0+99999999999999999999", "1:17: \"list\" holds \"99999999999999999999\"; expected whole numbers joined by +"},
        {"lodex take list -2", "1:17: \"list\" is \"-2\"; expected at least -1"},
        {"lodex take reals 1++2", "1:18: \"reals\" holds \"\"; expected finite numbers joined by +"},
        {"lodex take thing B", "1:18: there is no Thing \"B\""},
        {"lodex take name A", "1:17: the name \"A\" is taken"},
        {"lodex on", "1:7: expected a type of object behind \"on\""},
        {"lodex on Nothing A poke", "1:10: there is no type of object \"Nothing\""},
        {"lodex on Thing", "1:10: expected the name of an object and a verb behind \"Thing\""},
        {"lodex on Thing A jump", "1:18: there is no verb \"jump\" of Thing"},
        {"lodex on Thing B C jump high", "1:20: there is no verb \"jump\" of Thing"},
        {"lodex on Thing B C", "1:18: expected a verb behind the name of the Thing"},
        {"lodex on Thing D", "1:16: expected a verb behind the name of the Thing"},
        {"lodex on Thing D E jump", "1:18: no verb of Thing stands behind the name in \"D E jump\""},
        {"lodex on Thing A", "1:16: expected a verb behind the name of the Thing"},
        {"lodex take list 0+1 colour red", "1:21: \"take\" has no keyword \"colour\"; usage: "},
        {"lodex take flag 1 flag 0", "1:19: \"flag\" is given twice"},
        {"lodex take real 1 nan", "1:17: \"real\" is \"1 nan\"; expected a finite number"},
        {"lodex on Thing No One poke", "1:16: there is no Thing \"No One\""},
        {"lodex take\n lodex take \"", "2:13: a double quote is not closed on its line"},
    };
    for (const auto& [text, message] : cases) {
        const std::string found = error(text);
        EXPECT_TRUE(message.ends_with("usage: ") ? found.starts_with(message) : found == message)
            << text << "\n  " << found << "\n  " << message;
    }
    EXPECT_TRUE(Interpreter::instance().journal().empty());
}

TEST_F(Interpretation, NewNamesMustBeLegal)
{
    for (const char* name : {"everywhere", "all_regions", "all_properties", "region_0", "A+B", "A twin"}) {
        const std::string found = error(std::string("lodex make thing name \"") + name + "\"");
        EXPECT_NE(found.find(std::string("\"") + name + "\" cannot be a name: "), std::string::npos) << found;
        EXPECT_FALSE(exists(name));
    }
    EXPECT_TRUE(run("lodex make thing name Größe 2"));
    EXPECT_TRUE(exists("Größe 2"));
}

TEST_F(Interpretation, ASubmissionIsParsedWholeBeforeAnythingRuns)
{
    EXPECT_EQ(error("lodex make thing name A; lodex make thing nome B"),
              "1:43: \"make thing\" has no keyword \"nome\"; usage: lodex make thing name NAME [twin NAME]");
    EXPECT_FALSE(exists("A")) << "the second statement does not parse, so the first must not run";
}

TEST_F(Interpretation, AFailureStopsTheRestUnlessToldToGoOn)
{
    const std::string text = "lodex make thing name A\nlodex break text now\nlodex make thing name B";
    const auto results = Interpreter::instance().run(text, {.source = "a.lodex"});
    ASSERT_EQ(results.size(), 3u);
    EXPECT_EQ(results[0].status, StatementStatus::Done);
    EXPECT_EQ(results[1].status, StatementStatus::Failed);
    EXPECT_EQ(results[1].message, "a.lodex:2:18: it broke\n  in: lodex break text now");
    EXPECT_EQ(results[2].status, StatementStatus::Skipped);
    EXPECT_TRUE(exists("A"));
    EXPECT_FALSE(exists("B"));
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error), std::vector<std::string>{"a.lodex:2:18: it broke\n  in: lodex break text now\n"});

    Lodex::GeobaseLib::instance()->clear();
    const auto all = Interpreter::instance().run(text, {.keep_going = true});
    EXPECT_EQ(all[2].status, StatementStatus::Done);
    EXPECT_TRUE(exists("B"));
}

TEST_F(Interpretation, JournalHoldsWhatSucceededAndChangesModels)
{
    run("lodex make thing name A; lodex update all cameras; lodex break; lodex take");
    EXPECT_EQ(Interpreter::instance().journal(), std::vector<std::string>{"lodex make thing name A"});
    const std::string script = Interpreter::instance().journal().front();
    Lodex::GeobaseLib::instance()->clear();
    EXPECT_TRUE(run(script));
    EXPECT_TRUE(exists("A"));
}

TEST_F(Interpretation, DestroysJoinedNamesAllOrNone)
{
    add("A");
    add("B C");
    EXPECT_EQ(error("lodex destroy objects A+X"), "1:23: there is no object \"X\"");
    EXPECT_TRUE(exists("A"));
    EXPECT_TRUE(run("lodex destroy objects A+B+C"));
    EXPECT_FALSE(exists("A"));
    EXPECT_FALSE(exists("B C"));
    EXPECT_EQ(error("lodex destroy objects A"), "1:23: there is no object \"A\"");
}

TEST_F(Interpretation, RenamesAnObject)
{
    add("A");
    EXPECT_TRUE(run("lodex rename object A name New Name"));
    EXPECT_TRUE(exists("New Name"));
    EXPECT_FALSE(exists("A"));
}

TEST_F(Interpretation, UpdatingCamerasSucceedsWithoutAny)
{
    EXPECT_TRUE(run("lodex update all cameras"));
}

TEST_F(Interpretation, CancelEndsAVerb)
{
    class Impatient : public Lodex::ProgressSink {
    public:
        void begin(const Lodex::CString&) override {}
        bool progress(double) override { return ++calls < 3; }
        void end() override {}
        int calls = 0;
    } sink;
    Lodex::ProgressSink* former = Lodex::ProgressTracer::set_sink(&sink);
    const auto results = Interpreter::instance().run("lodex wait");
    Lodex::ProgressTracer::set_sink(former);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].status, StatementStatus::Cancelled);
    EXPECT_EQ(results[0].message, "1:1: cancelled; nothing was changed\n  in: lodex wait");
    EXPECT_FALSE(Interpreter::instance().busy());
}

TEST_F(Interpretation, ACancelEndsTheSubmissionEvenWhenToldToGoOn)
{
    class Stopped : public Lodex::ProgressSink {
    public:
        void begin(const Lodex::CString&) override {}
        bool progress(double) override { return false; }
        void end() override {}
    } sink;
    Lodex::ProgressSink* former = Lodex::ProgressTracer::set_sink(&sink);
    const auto results = Interpreter::instance().run("lodex wait; lodex make thing name A", {.keep_going = true});
    Lodex::ProgressTracer::set_sink(former);
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].status, StatementStatus::Cancelled);
    EXPECT_EQ(results[1].status, StatementStatus::Skipped);
    EXPECT_FALSE(exists("A"));
}

TEST_F(Interpretation, LongStatementsToAnObjectAreReadInTime)
{
    add("A");
    std::string text = "lodex on Thing A poke";
    for (int i = 0; i < 50000; ++i)
        text += " poke";
    ASSERT_TRUE(run(text));
    EXPECT_EQ(seen.object, "A");
}

TEST_F(Interpretation, RefusesASubmissionWhileAnotherOneRuns)
{
    const auto results = Interpreter::instance().run("lodex nest");
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].answer, "1:1: another command is still running");
    EXPECT_EQ(seen.verb, "");
}

TEST_F(Interpretation, TheHostInterfaceRunsStreams)
{
    std::ostringstream stream;
    stream << "lodex make thing name A" << '\0' << "; lodex make thing name B";
    EXPECT_TRUE(Lodex::CommandExecuterAction::execute(stream));
    EXPECT_TRUE(exists("A"));
    EXPECT_FALSE(exists("B"));

    class Count : public Lodex::Action {
    public:
        void execute() override { ++count; }
        int count = 0;
    };
    const Lodex::Ref<Count> after(new Count);
    std::ostringstream failing;
    failing << "lodex break";
    EXPECT_FALSE(Lodex::CommandLib::instance()->cmd_executer()->run_cmd(failing, after.get()));
    EXPECT_EQ(after->count, 1);
}

TEST_F(Interpretation, TellsItsListenerEachSubmissionAsItCame)
{
    std::vector<std::string> heard;
    Interpreter::instance().set_listener([&](const std::string& text) { heard.push_back(text); });
    run("lodex take ; ");
    run(std::string("nonsense\0rest", 13));
    Interpreter::instance().set_listener({});
    EXPECT_EQ(heard, (std::vector<std::string>{"lodex take ; ", "nonsense"}));
}

TEST_F(Interpretation, HelpAndJsonComeFromTheDeclarations)
{
    const auto results = Interpreter::instance().run("lodex help make thing");
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].answer, "lodex make thing name NAME [twin NAME]\nmakes\n  name (new name, required): \n  twin (new name): \n");
    EXPECT_EQ(error("lodex help nonsense"), "1:12: there is no verb \"nonsense\"");

    const auto json = nlohmann::json::parse(VerbRegistry::instance().to_json());
    const auto it = std::ranges::find_if(json["verbs"], [](const auto& verb) { return verb["name"] == "take"; });
    ASSERT_NE(it, json["verbs"].end());
    EXPECT_EQ((*it)["keywords"].size(), many.size());
    EXPECT_EQ((*it)["keywords"][1]["max"], 10);
    EXPECT_EQ((*it)["keywords"][3]["choices"][1], "two words");
}

TEST_F(Interpretation, TheSameVerbTwiceIsAProgrammingError)
{
    EXPECT_THROW(VerbRegistry::instance().add({.name = "take"}), std::logic_error);
}
