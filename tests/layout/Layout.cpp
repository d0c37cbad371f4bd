#include "Layout.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>

namespace layout {

namespace fs = std::filesystem;

namespace {

/// A folder and everything below it; "" is everything.
bool is_within(std::string_view file, std::string_view folder)
{
    return folder.empty() || file == folder ||
           (file.starts_with(folder) && file.size() > folder.size() && file[folder.size()] == '/');
}

bool is_word_character(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

std::string_view trimmed(std::string_view text)
{
    const auto is_space = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    return text;
}

std::vector<std::string> read_lines(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(std::move(line));
    return lines;
}

/// Files below root as paths relative to it with "/", sorted; without version control, build results and output.
std::vector<std::string> files_below(const fs::path& root)
{
    std::vector<std::string> files;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
        const std::string relative = it->path().lexically_relative(root).generic_string();
        if (it->is_directory() && (relative == ".git" || relative == "build" || relative == "out"))
            it.disable_recursion_pending();
        else if (it->is_regular_file())
            files.push_back(relative);
    }
    std::ranges::sort(files);
    return files;
}

bool is_header(std::string_view file)
{
    return file.ends_with(".h") || file.ends_with(".hpp");
}

bool is_source(std::string_view file)
{
    return is_header(file) || file.ends_with(".cpp") || file.ends_with(".cc") || file.ends_with(".cxx");
}

struct Include {
    long line = 0;
    std::string name; ///< between the brackets or quotes; empty when the line cannot be read
    bool angled = false;
    std::optional<std::string> file; ///< of the tree, relative to the root
};

/// The include lines of a source text, those in block comments left out.
std::vector<Include> includes_of(const std::vector<std::string>& lines)
{
    std::vector<Include> includes;
    bool in_comment = false;
    for (std::size_t n = 0; n < lines.size(); ++n) {
        std::string_view line = trimmed(lines[n]);
        if (in_comment) {
            const std::size_t end = line.find("*/");
            in_comment = end == std::string_view::npos;
            line = in_comment ? std::string_view() : trimmed(line.substr(end + 2));
        }
        if (line.starts_with("/*")) {
            const std::size_t end = line.find("*/", 2);
            in_comment = end == std::string_view::npos;
            line = in_comment ? std::string_view() : trimmed(line.substr(end + 2));
        }
        if (!line.starts_with('#'))
            continue;
        line = trimmed(line.substr(1));
        if (!line.starts_with("include"))
            continue;
        line = trimmed(line.substr(7));
        Include include;
        include.line = static_cast<long>(n) + 1;
        if (!line.empty() && (line.front() == '<' || line.front() == '"')) {
            include.angled = line.front() == '<';
            const std::size_t end = line.find(include.angled ? '>' : '"', 1);
            if (end != std::string_view::npos)
                include.name = line.substr(1, end - 1);
        }
        includes.push_back(std::move(include));
    }
    return includes;
}

using Includes = std::map<std::string, std::vector<Include>>;

/// Include lines of every source file, each led to its file where the tree has one: beside the including file, in one
/// of the folders above it, among the interfaces, or with the helpers of the tests.
Includes read_includes(const fs::path& root)
{
    Includes all;
    for (const std::string& file : files_below(root)) {
        if (is_source(file))
            all[file] = includes_of(read_lines(root / file));
    }
    for (auto& [file, includes] : all) {
        for (Include& include : includes) {
            std::vector<fs::path> folders;
            if (!include.angled) {
                for (fs::path folder = fs::path(file).parent_path(); !folder.empty(); folder = folder.parent_path())
                    folders.push_back(folder);
            }
            folders.insert(folders.end(), {fs::path("host"), fs::path(), fs::path("tests/support")});
            for (const fs::path& folder : folders) {
                const std::string candidate = (folder / include.name).lexically_normal().generic_string();
                if (!include.name.empty() && all.contains(candidate)) {
                    include.file = candidate;
                    break;
                }
            }
        }
    }
    return all;
}

bool is_top_folder(std::string_view include, const std::vector<Rule>& rules)
{
    const std::string_view first = include.substr(0, include.find('/'));
    if (first == include)
        return false;
    return first == "Lodex" || first == "Kelvane" || std::ranges::any_of(rules, [first](const Rule& rule) {
               return std::string_view(rule.folder).substr(0, rule.folder.find('/')) == first;
           });
}

/// Made by the toolkit's compilers at build time.
bool is_generated(std::string_view include)
{
    const std::string_view name = include.substr(include.rfind('/') + 1);
    return name.starts_with("moc_") || name.starts_with("ui_") || name.starts_with("qrc_") || name.ends_with(".moc");
}

std::string_view library_name(Library library)
{
    constexpr std::array<std::string_view, 14> names{
        "the standard library", "the system", "Qt",  "VTK",            "TBB",        "Eigen",            "HDF5",
        "libdeflate", "the command line library", "JSON",   "fmt", "the test library", "the benchmark library", "an unknown library"};
    return names[static_cast<std::size_t>(library)];
}

/// The node of the graph of folders: a folder with a rule, or one library of the interfaces.
std::string node_of(std::string_view file, const std::vector<Rule>& rules)
{
    if (is_within(file, "host")) {
        std::size_t end = 0;
        for (int parts = 0; parts < 3 && end != std::string_view::npos; ++parts)
            end = file.find('/', end + 1);
        return std::string(file.substr(0, end));
    }
    const Rule* rule = rule_for(file, rules);
    return rule ? rule->folder : std::string();
}

/// Looks for forbidden things behind an include, file by file.
class Reach {
public:
    explicit Reach(const Includes& all) : all_(all) {}

    /// The way from a file to the first forbidden thing, " -> " between the steps; empty when there is none.
    [[nodiscard]] std::string forbidden_way(const std::string& file, const Rule& rule) const
    {
        std::set<std::string> seen;
        return search(file, rule, seen);
    }

private:
    [[nodiscard]] std::string search(const std::string& file, const Rule& rule, std::set<std::string>& seen) const
    {
        if (!seen.insert(file).second)
            return {};
        for (const std::string& folder : rule.never_folders) {
            if (is_within(file, folder))
                return file;
        }
        const auto it = all_.find(file);
        if (it == all_.end())
            return {};
        for (const Include& include : it->second) {
            std::string way;
            if (include.file)
                way = search(*include.file, rule, seen);
            else if (rule.never_libraries.contains(library_of(include.name)))
                way = "<" + include.name + ">";
            if (!way.empty())
                return file + " -> " + way;
        }
        return {};
    }

    const Includes& all_;
};

/// One violation for every set of folders that include each other in a circle.
void check_cycles(const Includes& all, const std::vector<Rule>& rules, std::vector<Violation>& violations)
{
    struct Edge {
        std::string file;
        long line = 0;
    };
    std::map<std::string, std::map<std::string, Edge>> graph;
    for (const auto& [file, includes] : all) {
        const std::string from = node_of(file, rules);
        for (const Include& include : includes) {
            const std::string to = include.file ? node_of(*include.file, rules) : std::string();
            if (!from.empty() && !to.empty() && from != to)
                graph[from].try_emplace(to, Edge{file, include.line});
        }
    }
    const auto reachable = [&graph](const std::string& start) {
        std::set<std::string> seen;
        std::vector<std::string> open{start};
        while (!open.empty()) {
            const std::string node = open.back();
            open.pop_back();
            for (const auto& [next, edge] : graph[node]) {
                if (seen.insert(next).second)
                    open.push_back(next);
            }
        }
        return seen;
    };
    std::map<std::string, std::set<std::string>> reach;
    std::vector<std::string> nodes;
    for (const auto& [node, edges] : graph)
        nodes.push_back(node);
    for (const std::string& node : nodes)
        reach[node] = reachable(node);
    std::set<std::string> done;
    for (const std::string& node : nodes) {
        if (done.contains(node) || !reach[node].contains(node))
            continue;
        std::vector<std::string> circle;
        for (const std::string& other : nodes) {
            if (reach[node].contains(other) && reach[other].contains(node))
                circle.push_back(other);
        }
        done.insert(circle.begin(), circle.end());
        Violation violation;
        violation.text = "folders include each other in a circle:";
        for (const std::string& from : circle) {
            for (const std::string& to : circle) {
                const auto edge = graph[from].find(to);
                if (edge == graph[from].end())
                    continue;
                if (violation.file.empty()) {
                    violation.file = edge->second.file;
                    violation.line = edge->second.line;
                }
                violation.text +=
                    " " + from + " -> " + to + " (" + edge->second.file + ":" + std::to_string(edge->second.line) + ")";
            }
        }
        violations.push_back(std::move(violation));
    }
}

} // namespace

std::string Violation::message() const
{
    return line > 0 ? file + ":" + std::to_string(line) + ": " + text : file + ": " + text;
}

const Rule* rule_for(std::string_view file, const std::vector<Rule>& rules)
{
    const Rule* best = nullptr;
    for (const Rule& rule : rules) {
        if (is_within(file, rule.folder) && (!best || rule.folder.size() > best->folder.size()))
            best = &rule;
    }
    return best;
}

Library library_of(std::string_view header)
{
    static const std::set<std::string_view> standard{
        "algorithm", "any", "array", "atomic", "barrier", "bit", "bitset", "charconv", "chrono", "codecvt", "compare",
        "complex", "concepts", "condition_variable", "coroutine", "deque", "exception", "execution", "filesystem",
        "format", "forward_list", "fstream", "functional", "future", "initializer_list", "iomanip", "ios", "iosfwd",
        "iostream", "istream", "iterator", "latch", "limits", "list", "locale", "map", "memory", "memory_resource",
        "mutex", "new", "numbers", "numeric", "optional", "ostream", "queue", "random", "ranges", "ratio", "regex",
        "scoped_allocator", "semaphore", "set", "shared_mutex", "source_location", "span", "sstream", "stack",
        "stdexcept", "stop_token", "streambuf", "string", "string_view", "syncstream", "system_error", "thread",
        "tuple", "type_traits", "typeindex", "typeinfo", "unordered_map", "unordered_set", "utility", "valarray",
        "variant", "vector", "version", "cassert", "cctype", "cerrno", "cfenv", "cfloat", "cinttypes", "climits",
        "clocale", "cmath", "csetjmp", "csignal", "cstdarg", "cstddef", "cstdint", "cstdio", "cstdlib", "cstring",
        "ctime", "cuchar", "cwchar", "cwctype"};
    static const std::set<std::string_view> system{
        "unistd.h", "fcntl.h", "errno.h", "signal.h", "dlfcn.h", "poll.h", "pwd.h", "spawn.h", "dirent.h", "malloc.h",
        "sched.h", "time.h", "cxxabi.h", "execinfo.h"};
    // Vector instructions come with the compiler.
    if (standard.contains(header) || header.ends_with("mmintrin.h"))
        return Library::Standard;
    if (system.contains(header) || header.starts_with("sys/") || header.starts_with("linux/"))
        return Library::System;
    const auto is_upper = [&header](std::size_t i) {
        return i < header.size() && std::isupper(static_cast<unsigned char>(header[i]));
    };
    if ((header.starts_with('Q') && is_upper(1)) || header.starts_with("Qt") || is_generated(header))
        return Library::Qt;
    if (header.starts_with("vtk"))
        return Library::Vtk;
    constexpr std::array<std::pair<std::string_view, Library>, 11> folders{{{"tbb/", Library::Tbb},
                                                                            {"oneapi/tbb", Library::Tbb},
                                                                            {"Eigen/", Library::Eigen},
                                                                            {"hdf5", Library::Hdf5},
                                                                            {"CLI/", Library::CommandLine},
                                                                            {"nlohmann/", Library::Json},
                                                                            {"fmt/", Library::Text},
                                                                            {"spdlog/", Library::Text},
                                                                            {"gtest/", Library::Test},
                                                                            {"gmock/", Library::Test},
                                                                            {"benchmark/", Library::Benchmark}}};
    for (const auto& [start, library] : folders) {
        if (header.starts_with(start))
            return library;
    }
    if (header.starts_with("H5") && header.ends_with(".h"))
        return Library::Hdf5;
    if (header == "libdeflate.h")
        return Library::Deflate;
    return Library::Unknown;
}

std::vector<Violation> check_includes(const fs::path& root, const std::vector<Rule>& rules)
{
    const Includes all = read_includes(root);
    const Reach reach(all);
    std::vector<Violation> violations;
    for (const auto& [file, includes] : all) {
        const Rule* rule = rule_for(file, rules);
        if (!rule) {
            violations.push_back({file, 0, "the folder has no rule"});
            continue;
        }
        for (const Include& include : includes) {
            const auto report = [&](std::string text) { violations.push_back({file, include.line, std::move(text)}); };
            if (include.name.empty()) {
                report("the include line cannot be read");
            } else if (include.file) {
                const auto is_target = [&](const std::string& folder) { return is_within(*include.file, folder); };
                const Rule* target = rule_for(*include.file, rules);
                if (!is_target(rule->folder) && !std::ranges::any_of(rule->folders, is_target))
                    report(rule->folder + " must not include " + *include.file);
                // What the other folder must not do either is told there.
                const bool told_there = target && target->never_libraries == rule->never_libraries &&
                                        target->never_folders == rule->never_folders;
                if (const std::string way = told_there ? "" : reach.forbidden_way(*include.file, *rule); !way.empty())
                    report(rule->folder + " must not reach " + way);
            } else if (is_top_folder(include.name, rules) && !is_generated(include.name)) {
                report(include.name + " does not exist");
            } else if (const Library library = library_of(include.name); library == Library::Unknown) {
                report(include.angled ? "<" + include.name + "> belongs to no known library"
                                      : include.name + " does not exist");
            } else if (!rule->libraries.contains(library)) {
                report(rule->folder + " must not use " + std::string(library_name(library)) + ": " + include.name);
            }
        }
    }
    check_cycles(all, rules, violations);
    return violations;
}

std::vector<Violation> check_headers(const fs::path& root)
{
    std::vector<Violation> violations;
    for (const std::string& file : files_below(root)) {
        if (!is_header(file))
            continue;
        const std::vector<std::string> lines = read_lines(root / file);
        if (std::ranges::none_of(lines, [](const std::string& line) { return trimmed(line) == "#pragma once"; }))
            violations.push_back({file, 0, "#pragma once is missing"});
        if (!is_within(file, "host"))
            continue;
        for (std::size_t n = 0; n < lines.size(); ++n) {
            const std::string_view line = trimmed(lines[n]);
            std::string_view declaration = line;
            if (declaration.starts_with("template")) {
                // "template <...> class X" on one line
                const std::size_t end = declaration.rfind("> ");
                declaration = end == std::string_view::npos ? std::string_view() : declaration.substr(end + 2);
            }
            const bool is_class = declaration.starts_with("class ") || declaration.starts_with("struct ");
            // Private parts and classes within classes are the class's own affair.
            const bool outermost = !lines[n].empty() && !std::isspace(static_cast<unsigned char>(lines[n].front()));
            if (!is_class || !outermost || line.ends_with(';'))
                continue;
            std::size_t before = n;
            while (before > 0 && trimmed(lines[before - 1]).starts_with("template"))
                --before;
            const std::string_view comment = before > 0 ? trimmed(lines[before - 1]) : std::string_view();
            if (!comment.starts_with("///") && !comment.ends_with("*/"))
                violations.push_back(
                    {file, static_cast<long>(n) + 1, "the class has no doc comment: " + std::string(line)});
        }
    }
    return violations;
}

std::vector<Violation> check_words(const fs::path& root)
{
    static const std::set<std::string> text_endings{
        ".h", ".hpp", ".cpp", ".cc", ".cxx", ".cmake", ".txt", ".md", ".lodex", ".sh", ".py", ".json", ".qrc", ".ts",
        ".svg", ".html", ".css", ".yml", ".yaml", ""};
    // In two parts, so that this file passes its own check.
    const std::vector<std::string> words{std::string("TO") + "DO", std::string("FIX") + "ME", std::string("XX") + "X"};
    const std::string slash = "/";
    std::vector<std::string> paths{slash + "home/", slash + "root/", slash + "Users/", "C:" + std::string("\\Users")};
    const std::string own = fs::weakly_canonical(root).generic_string();
    if (std::ranges::count(own, '/') > 1)
        paths.push_back(own);

    std::vector<Violation> violations;
    for (const std::string& file : files_below(root)) {
        if (!text_endings.contains(fs::path(file).extension().string()))
            continue;
        const std::vector<std::string> lines = read_lines(root / file);
        if (!lines.empty() && lines.front().find('\0') != std::string::npos)
            continue; // not a text
        for (std::size_t n = 0; n < lines.size(); ++n) {
            const std::string& line = lines[n];
            const auto report = [&](const std::string& word) {
                violations.push_back({file, static_cast<long>(n) + 1, "must not hold " + word});
            };
            for (const std::string& word : words) {
                for (std::size_t at = line.find(word); at != std::string::npos; at = line.find(word, at + 1)) {
                    const std::size_t end = at + word.size();
                    if ((at == 0 || !is_word_character(line[at - 1])) &&
                        (end == line.size() || !is_word_character(line[end]))) {
                        report(word);
                        break;
                    }
                }
            }
            for (const std::string& path : paths) {
                const std::size_t at = line.find(path);
                // A path that only ends like this one ("docs/home/") is another one.
                if (at != std::string::npos &&
                    (at == 0 || (!is_word_character(line[at - 1]) && line[at - 1] != '.' && line[at - 1] != '}')))
                    report("the path " + path);
            }
        }
    }
    return violations;
}

} // namespace layout
