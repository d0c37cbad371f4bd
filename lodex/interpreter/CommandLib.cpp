#include "Interpreter.h"

#include <Lodex/interpreter/CommandExecuter.h>
#include <Lodex/interpreter/Lodex_interpreter_init.h>

#include <Lodex/geobase/Lodex_geobase_init.h>

#include <algorithm>
#include <utility>

namespace Lodex {

namespace {

class InterpreterExecuter : public CommandExecuter {
public:
    bool run_cmd(std::ostringstream& command, Action* after) override
    {
        const Ref<Action> hold(after);
        const auto results = lodex::Interpreter::instance().run(command.str());
        if (after)
            after->execute();
        return std::ranges::all_of(results, [](const auto& r) { return r.status == lodex::StatementStatus::Done; });
    }
};

class EmbeddedCommandLib : public CommandLib {
public:
    [[nodiscard]] CommandExecuter* cmd_executer() override { return in_use_; }
    CommandExecuter* set_cmd_executer(CommandExecuter* executer) override
    {
        return std::exchange(in_use_, executer ? executer : &own_);
    }

private:
    InterpreterExecuter own_;
    CommandExecuter* in_use_ = &own_;
};

} // namespace

CommandLib* CommandLib::instance()
{
    static EmbeddedCommandLib library;
    return &library;
}

bool CommandExecuterAction::execute(std::ostringstream& command)
{
    return CommandLib::instance()->cmd_executer()->run_cmd(command, nullptr);
}

void Lodex_interpreter_init::start()
{
    Lodex_geobase_init::initialize();
}

} // namespace Lodex
