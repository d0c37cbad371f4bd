#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Checks of the source tree as text: which folder includes which, and what every file owes to its readers.
namespace layout {

/// Where a header that is not of the tree comes from.
enum class Library {
    Standard,
    System, ///< the operating system's or the compiler's
    Qt,
    Vtk,
    Tbb,
    Eigen,
    Hdf5,
    Deflate,
    CommandLine,
    Json,
    Text, ///< formatting and logging
    Test,
    Benchmark,
    Unknown
};

/// What the files of a folder (and of folders below it that have no rule of their own) may include.
struct Rule {
    std::string folder;
    /// Folders of the tree, each with the folders below it; "" is the whole tree. A folder may always include itself
    /// and the folders below it.
    std::vector<std::string> folders;
    std::set<Library> libraries;
    /// What must not come in by way of other headers either.
    std::vector<std::string> never_folders;
    std::set<Library> never_libraries;
};

/// The rules of this project.
[[nodiscard]] const std::vector<Rule>& project_rules();

/// Something that is not as it should be. line is 1-based, 0 for the whole file.
struct Violation {
    std::string file;
    long line = 0;
    std::string text;

    [[nodiscard]] std::string message() const;
};

/// The folder whose rule holds for a file (longest match); null when there is none.
[[nodiscard]] const Rule* rule_for(std::string_view file, const std::vector<Rule>& rules);

/// Library of a header by its name between the angle brackets.
[[nodiscard]] Library library_of(std::string_view header);

/// All include lines against the rules: allowed folders and libraries, also by way of other headers; every included
/// file exists; no cycle between folders.
[[nodiscard]] std::vector<Violation> check_includes(const std::filesystem::path& root, const std::vector<Rule>& rules);

/// Every header has `#pragma once`; every class of the interface headers (host/) has a doc comment.
[[nodiscard]] std::vector<Violation> check_headers(const std::filesystem::path& root);

/// No text file holds a reminder of unfinished work or a path that is right on one machine only.
[[nodiscard]] std::vector<Violation> check_words(const std::filesystem::path& root);

} // namespace layout
