#include "flowunit/LQColormapPropertyObserver.h"

#include "flowunit/LQFlowUnitPanel.h"

namespace Kelvane {

LQColormapPropertyObserver::LQColormapPropertyObserver(LQFlowUnitPanel* panel, Lodex::Style* style)
    : panel_(panel), style_(style)
{
    style_->attach_style(this);
}

LQColormapPropertyObserver::~LQColormapPropertyObserver()
{
    if (style_)
        style_->detach_style(this);
}

void LQColormapPropertyObserver::update(Lodex::StyleInfo*)
{
    panel_->colormapUpdate();
}

void LQColormapPropertyObserver::disconnect()
{
    style_ = nullptr;
}

} // namespace Kelvane
