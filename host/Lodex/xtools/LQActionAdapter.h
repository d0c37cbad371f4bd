#pragma once

#include <Lodex/utils/Action.h>

#include <QObject>

namespace Lodex {

/// Lets a Qt signal execute a host action. Holds a reference to it.
class LQActionAdapter : public QObject {
    Q_OBJECT

public:
    LQActionAdapter(Action* action, QObject* parent);

public slots:
    void run();

private:
    Ref<Action> action_;
};

} // namespace Lodex
