// lodex: the batch runner. Results on standard output, messages and progress on standard error.

#include "BatchRunner.h"
#include "Comparison.h"
#include "ProjectInfo.h"
#include "lodex/gridio/GridFormat.h"
#include "lodex/interpreter/Verb.h"
#include "lodex/utils/LogSinks.h"
#include "lodex/utils/Version.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "upscaling/OperatorPage.h"

#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/volumes/Lodex_volumes_init.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <tbb/global_control.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <unistd.h>

using namespace lodex;

namespace {

volatile std::sig_atomic_t interrupted = 0;

void on_interrupt(int)
{
    interrupted = 1;
}

/// A wish to stop ends the running command, and a file that may not grow is an error of that file. What whoever started
/// the program wants ignored (nohup, a job in the background) stays ignored.
void set_signal_handlers()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (std::signal(signal, on_interrupt) == SIG_IGN)
            std::signal(signal, SIG_IGN);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

/// Progress on standard error where that is a terminal; an interrupt ends the running command.
class ConsoleProgress : public Lodex::ProgressSink {
public:
    explicit ConsoleProgress(bool shown) : shown_(shown) {}

    void begin(const Lodex::CString& title) override
    {
        title_ = title.str();
        last_ = -1;
    }
    bool progress(double done) override
    {
        const int percent = static_cast<int>(done * 100);
        if (shown_ && percent != last_) {
            std::fprintf(stderr, "\r%s: %3d %%", title_.c_str(), percent);
            last_ = percent;
        }
        return interrupted == 0;
    }
    void end() override
    {
        if (shown_ && last_ >= 0)
            std::fprintf(stderr, "\r\033[K");
    }

private:
    bool shown_;
    std::string title_;
    int last_ = -1;
};

int show_help(const std::vector<std::string>& words)
{
    std::string verb;
    for (const std::string& word : words)
        verb += (verb.empty() ? "" : " ") + word;
    const std::string text = VerbRegistry::instance().help(verb);
    if (text.empty()) {
        std::cerr << "there is no verb \"" << verb << "\"\n";
        return BadUsage;
    }
    std::cout << text;
    return AllDone;
}

int show_verbs(bool json, bool markdown)
{
    const VerbRegistry& verbs = VerbRegistry::instance();
    std::cout << (json ? verbs.to_json() + "\n" : markdown ? verbs.to_markdown() : verbs.help({}));
    return AllDone;
}

int show_info(const std::string& path, bool json)
{
    if (is_project(path))
        return show_project(path, json) ? AllDone : CommandFailed;
    if (!import_model(path, "model"))
        return CommandFailed;
    const auto results = Interpreter::instance().run("lodex report sgrid model");
    if (results.empty() || results[0].status != StatementStatus::Done)
        return CommandFailed;
    if (json) {
        std::cout << results[0].answer;
        return AllDone;
    }
    const auto report = nlohmann::ordered_json::parse(results[0].answer);
    std::cout << path << ": " << report["size"][0] << " x " << report["size"][1] << " x " << report["size"][2] << " cells, "
              << report["active"] << " active, bulk volume " << report["bulk_volume"] << '\n';
    for (const auto& [name, property] : report["properties"].items()) {
        std::cout << "  " << name << ": " << property["count"] << " values, " << property["min"] << " to " << property["max"]
                  << ", mean " << property["mean"] << '\n';
    }
    for (const auto& [name, region] : report["regions"].items())
        std::cout << "  region " << name << ": " << region["cells"] << " cells\n";
    for (const auto& layer : report["layers"])
        std::cout << "  unit " << layer["unit"].get<std::string>() << ": " << layer["nb_k_cells"] << " K layers\n";
    return AllDone;
}

int show_operators()
{
    std::cout << Kelvane::operator_page();
    return AllDone;
}

int compare(const std::string& a, const std::string& b, const Tolerance& tolerance)
{
    if (!import_model(a, "first") || !import_model(b, "second"))
        return CommandFailed;
    const auto lines = differences(find_grid("first")->model(), find_grid("second")->model(), tolerance);
    for (const std::string& line : lines)
        std::cout << line << '\n';
    if (lines.empty())
        std::cout << "the models agree\n";
    return lines.empty() ? AllDone : CommandFailed;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Runs command scripts on stratigraphic grids.", "lodex"};
    app.set_version_flag("--version", std::string("lodex ") + program_version());
    BatchOptions options;
    bool quiet = false;
    int threads = 0;
    app.add_flag("--quiet", quiet, "Show errors alone");
    app.add_option("--threads", threads, "Number of threads; 0: all cores")->check(CLI::NonNegativeNumber);
    app.add_option("--json", options.json_report, "Write a JSON report of all commands to this file");
    app.add_option("--journal", options.journal, "Write the statements that changed a model to this file");
    app.add_flag("--keep-going", options.keep_going, "Go on after a command that failed");
    app.add_option("-c", options.texts, "Command text to run")->allow_extra_args(false);
    app.require_subcommand(0, 1);
    app.fallthrough();

    CLI::App* run = app.add_subcommand("run", "Run command scripts");
    run->add_option("FILE", options.scripts, "Scripts, run in order")->required();

    CLI::App* verbs = app.add_subcommand("verbs", "List the verbs of the command language");
    bool verbs_json = false, verbs_markdown = false;
    verbs->fallthrough(false);
    verbs->add_flag("--json", verbs_json, "As JSON");
    verbs->add_flag("--markdown", verbs_markdown, "As the guide's reference page")->excludes("--json");

    CLI::App* operators = app.add_subcommand("operators", "Describe the upscaling methods and cell mappers, in Markdown");

    CLI::App* help = app.add_subcommand("help", "Explain a verb");
    std::vector<std::string> help_words;
    help->add_option("VERB", help_words, "Name of the verb");

    CLI::App* info = app.add_subcommand("info", "Tell what a model file holds");
    std::string model;
    bool info_json = false;
    info->fallthrough(false);
    info->add_option("MODEL", model, "The file")->required();
    info->add_flag("--json", info_json, "As JSON");

    CLI::App* comparison = app.add_subcommand("compare", "Compare two model files");
    std::string first, second;
    Tolerance tolerance;
    comparison->add_option("A", first, "A file")->required();
    comparison->add_option("B", second, "Another file")->required();
    comparison->add_option("--abs", tolerance.abs, "Absolute tolerance")->check(CLI::NonNegativeNumber);
    comparison->add_option("--rel", tolerance.rel, "Relative tolerance")->check(CLI::NonNegativeNumber);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? AllDone : BadUsage;
    }

    set_signal_handlers();
    Lodex::Lodex_volumes_init::initialize();
    std::optional<tbb::global_control> limit;
    if (threads > 0)
        limit.emplace(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(threads));
    const bool reader = info->parsed() || comparison->parsed();
    const ScreenSink screen(std::cerr, quiet ? Lodex::LogLevel::Error : reader ? Lodex::LogLevel::Warning : Lodex::LogLevel::Info);
    ConsoleProgress progress(!quiet && isatty(STDERR_FILENO) != 0);
    Lodex::ProgressTracer::set_sink(&progress);

    int status = BadUsage;
    try {
        if (verbs->parsed())
            status = show_verbs(verbs_json, verbs_markdown);
        else if (operators->parsed())
            status = show_operators();
        else if (help->parsed())
            status = show_help(help_words);
        else if (info->parsed())
            status = show_info(model, info_json);
        else if (comparison->parsed())
            status = compare(first, second, tolerance);
        else if (run->parsed() || !options.texts.empty())
            status = run_batch(options);
        else
            std::cerr << app.help();
    } catch (const std::bad_alloc&) {
        std::cerr << "error: not enough memory\n";
        status = CommandFailed;
    } catch (const std::exception& error) {
        std::cerr << "error: " << error.what() << '\n';
        status = CommandFailed;
    }
    if (!std::cout.flush()) {
        std::cerr << "error: standard output cannot be written\n";
        status = CommandFailed;
    }

    Lodex::ProgressTracer::set_sink(nullptr);
    return status;
}
