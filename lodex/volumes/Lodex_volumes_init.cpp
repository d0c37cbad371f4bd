#include <Lodex/volumes/Lodex_volumes_init.h>

#include <Lodex/interpreter/Lodex_interpreter_init.h>
#include <Lodex/math/Lodex_math_init.h>

namespace Lodex {

void Lodex_volumes_init::start()
{
    Lodex_math_init::initialize();
    Lodex_interpreter_init::initialize();
}

} // namespace Lodex
