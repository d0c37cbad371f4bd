#pragma once

#include <string>
#include <vector>

/// A page of the guide that is made from what is written elsewhere: declarations of verbs, methods and mappers, the
/// table of actions, docs/*.md.
struct ReferencePage {
    std::string path; ///< below the root of the help
    std::string html;
};

/// Needs a QApplication, for the actions of the main window.
[[nodiscard]] std::vector<ReferencePage> reference_pages();
