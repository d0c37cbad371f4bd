#pragma once

#include "lodex/interpreter/Interpreter.h"

#include <string>
#include <vector>

namespace lodex {

/// Options of `lodex run` and `lodex -c`.
struct BatchOptions {
    std::vector<std::string> scripts; ///< files, run in order
    std::vector<std::string> texts;   ///< command texts, run in order behind the scripts
    bool keep_going = false;          ///< go on after a failed statement
    std::string json_report;          ///< where the JSON report goes; empty: none
    std::string journal;              ///< where the journal is written; empty: nowhere
};

/// Exit statuses of the batch runner.
enum ExitStatus { AllDone = 0, CommandFailed = 1, BadUsage = 2 };

/// Runs scripts and texts. Answers go to standard output; messages are the log's.
[[nodiscard]] ExitStatus run_batch(const BatchOptions& options);

/// Imports a model under a name that no object has; fails with a message on standard error.
[[nodiscard]] bool import_model(const std::string& path, const std::string& name);

} // namespace lodex
