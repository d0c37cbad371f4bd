// Every example of the guide is run: <pre class="script"> by the interpreter, <pre class="shell"> by a shell with the
// batch runner, both in the order of the page, in a folder and with a catalogue of the page's own. What stands in
// <pre class="output"> must have been answered by the block before it, line by line; "..." stands for anything. The same for
// the README. (Scripts of examples/ are run by tests/batch.)

#include "GuideFiles.h"
#include "MarkdownPage.h"

#include "MessageList.h"

#include "lodex/interpreter/Interpreter.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/gui/Lodex_gui_init.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// A folder to work in, with the examples and the programs where a checkout has them.
class Examples : public testing::TestWithParam<std::string> {
protected:
    Examples() : before_(QDir::currentPath())
    {
        Lodex::Lodex_gui_init::initialize();
        clear();
        QDir folder(folder_.path());
        EXPECT_TRUE(folder.mkdir("build") && folder.mkdir("out"));
        EXPECT_TRUE(QFile::link(SOURCE_DIR "/examples", folder.filePath("examples")));
        EXPECT_TRUE(QFile::link(BUILD_BIN_DIR, folder.filePath("build/bin")));
        QFile run(folder.filePath("run")); // what ./run SCRIPT does once everything is built
        EXPECT_TRUE(run.open(QIODevice::WriteOnly));
        run.write("#!/bin/sh\nexec lodex run \"$@\"\n");
        run.setPermissions(run.permissions() | QFile::ExeOwner);
        EXPECT_TRUE(QDir::setCurrent(folder_.path()));
    }
    ~Examples() override
    {
        QDir::setCurrent(before_);
        clear();
    }
    static void clear()
    {
        Lodex::GeobaseLib::instance()->clear();
        lodex::Interpreter::instance().clear_journal();
    }

    /// Number of blocks that were run.
    int run_all(const std::string& page, const std::vector<Block>& blocks)
    {
        int run = 0;
        std::string answer;
        for (const Block& block : blocks) {
            const std::string place = page + ":" + std::to_string(block.line);
            if (block.kind == "script")
                answer = run_script(block.text, place);
            else if (block.kind == "shell")
                answer = run_shell(block.text, place);
            else if (block.kind == "output")
                expect_lines(answer, block.text, place);
            else
                EXPECT_EQ(block.kind, "text") << place << ": script, shell, output or text (which is not run)";
            run += block.kind == "script" || block.kind == "shell";
        }
        return run;
    }

private:
    static std::string run_script(const std::string& text, const std::string& place)
    {
        const MessageList messages;
        std::string answer;
        const auto results = lodex::Interpreter::instance().run(text);
        EXPECT_FALSE(results.empty()) << place;
        for (const lodex::StatementResult& result : results) {
            EXPECT_EQ(result.status, lodex::StatementStatus::Done) << place << ": " << result.text << '\n'
                                                                   << result.message;
            answer += result.answer;
        }
        for (const auto& [level, message] : messages.entries)
            answer += message + '\n';
        return answer;
    }
    /// Lines that begin with "$ " are one shell script, which stops at the first failure; the rest is what it answers.
    static std::string run_shell(const std::string& text, const std::string& place)
    {
        std::string script = "set -e\n", expected;
        bool goes_on = false;
        for (const std::string& line : lines_of(text)) {
            if (!goes_on && !line.starts_with("$ ")) {
                expected += line + '\n';
                continue;
            }
            script += (goes_on ? line : line.substr(2)) + '\n';
            goes_on = line.ends_with('\\');
        }
        EXPECT_NE(script, "set -e\n") << place << ": no line begins with \"$ \"";
        QProcess shell;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("PATH", QStringLiteral(BUILD_BIN_DIR ":") + environment.value("PATH"));
        environment.insert("LODEX", BUILD_BIN_DIR "/lodex");
        shell.setProcessEnvironment(environment);
        shell.setProcessChannelMode(QProcess::MergedChannels);
        shell.start("sh", {"-c", QString::fromStdString(script)});
        EXPECT_TRUE(shell.waitForFinished(120000)) << place;
        const std::string answer = shell.readAll().toStdString();
        EXPECT_EQ(shell.exitCode(), 0) << place << '\n' << script << answer;
        expect_lines(answer, expected, place);
        return answer;
    }
    static void expect_lines(const std::string& answer, const std::string& expected, const std::string& place)
    {
        std::size_t at = 0;
        for (const std::string& line : lines_of(expected)) {
            std::size_t from = 0;
            while (from < line.size()) { // pieces between "..."
                const auto end = std::min(line.find("...", from), line.size());
                const std::string piece = line.substr(from, end - from);
                const auto found = answer.find(piece, at);
                EXPECT_NE(found, std::string::npos) << place << ": not answered: " << piece << "\nbut: " << answer;
                if (found == std::string::npos)
                    return;
                at = found + piece.size();
                from = end + 3;
            }
        }
    }

    QString before_;
    QTemporaryDir folder_;
};

TEST_P(Examples, AllRun)
{
    const std::string page = read_text(guide_root() / GetParam());
    const auto blocks = blocks_of_html(page);
    const auto examples = std::ranges::count_if(
        blocks, [](const Block& block) { return block.kind == "script" || block.kind == "shell"; });
    EXPECT_EQ(run_all(GetParam(), blocks), examples);
}

std::vector<std::string> pages_with_examples()
{
    std::vector<std::string> pages;
    for (const std::string& path : guide_pages()) {
        if (read_text(guide_root() / path).find("<pre") != std::string::npos)
            pages.push_back(path);
    }
    return pages;
}

INSTANTIATE_TEST_SUITE_P(Guide, Examples, testing::ValuesIn(pages_with_examples()), [](const auto& info) {
    std::string name = info.param;
    std::ranges::replace_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
});

class OtherExamples : public Examples {};

TEST_F(OtherExamples, Readme)
{
    const auto blocks = blocks_of_markdown(read_text(SOURCE_DIR "/README.md"));
    EXPECT_GE(run_all("README.md", blocks), 2);
}

TEST_F(OtherExamples, Realisations)
{
    run_all("realisations.sh", {{"shell",
                                 "$ examples/realisations.sh 2\n"
                                 "seed,fine_cells,coarse_cells,fine_volume,coarse_volume,fine_mean_porosity,coarse_mean_porosity\n"
                                 "1,\n2,\n",
                                 1}});
}

} // namespace
