#include "frame/CommandText.h"

#include <Lodex/interpreter/CommandExecuter.h>

#include <locale>

namespace Kelvane {

std::ostringstream command_stream()
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    return stream;
}

bool submit_command(std::ostringstream& command)
{
    command << '\0';
    return Lodex::CommandExecuterAction::execute(command);
}

} // namespace Kelvane
