#include "frame/Kelvane_gui_init.h"

namespace Kelvane {

constinit int Kelvane_gui_init::count_ = 0; // used while other units are still being initialised

Kelvane_gui_init::Kelvane_gui_init()
{
    initialize();
}

Kelvane_gui_init::~Kelvane_gui_init()
{
    terminate();
}

void Kelvane_gui_init::initialize()
{
    if (count_++ == 0)
        initialize_internal();
}

void Kelvane_gui_init::terminate()
{
    if (--count_ == 0)
        terminate_internal();
}

void Kelvane_gui_init::initialize_internal() {}

void Kelvane_gui_init::terminate_internal() {}

} // namespace Kelvane
