#pragma once

#include <QCoreApplication>
#include <QEvent>

/// Runs what waits to be deleted from the event loop, and what that lets go of in turn.
inline void run_deferred_deletes()
{
    for (int i = 0; i < 4; ++i)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
