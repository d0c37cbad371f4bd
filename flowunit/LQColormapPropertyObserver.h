#pragma once

#include <Lodex/geobase/Style.h>

#include <QObject>

namespace Kelvane {

class LQFlowUnitPanel;

/// Follows the style of the property that a panel shows and has the panel reload its colour map on every change.
class LQColormapPropertyObserver : public QObject, public Lodex::StyleObserver {
    Q_OBJECT

public:
    /// Neither is owned. The panel must outlive the observer; the style may go before.
    LQColormapPropertyObserver(LQFlowUnitPanel* panel, Lodex::Style* style);
    ~LQColormapPropertyObserver() override;

    /// The panel may replace this observer during the call.
    void update(Lodex::StyleInfo* info) override;
    void disconnect() override;

private:
    LQFlowUnitPanel* panel_;
    Lodex::Style* style_;
};

} // namespace Kelvane
