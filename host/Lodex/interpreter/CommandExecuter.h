#pragma once

#include <Lodex/utils/Action.h>

#include <sstream>

namespace Lodex {

/// Runs command text. The text of a stream ends at its first NUL character.
class CommandExecuter {
public:
    virtual ~CommandExecuter() = default;
    /// Parses the whole text, then runs its statements in order until one fails. `after`, when not null, is executed once
    /// the text has run, whatever the outcome. True when every statement succeeded; failures are in the log.
    virtual bool run_cmd(std::ostringstream& command, Action* after) = 0;
};

/// The command interpreter of the process.
class CommandLib {
public:
    [[nodiscard]] static CommandLib* instance();

    virtual ~CommandLib() = default;
    /// Never null; not owned by the caller.
    [[nodiscard]] virtual CommandExecuter* cmd_executer() = 0;
    /// Puts a host's own executer in place, such as one that records or checks each command before it passes it on;
    /// null puts the library's own one back. Not owned. Returns the one that was in use.
    virtual CommandExecuter* set_cmd_executer(CommandExecuter* executer) = 0;
};

/// Runs command text as if the user had typed it.
class CommandExecuterAction {
public:
    /// As CommandExecuter::run_cmd() without an action to follow.
    static bool execute(std::ostringstream& command);
};

} // namespace Lodex
