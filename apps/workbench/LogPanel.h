#pragma once

#include <QWidget>

namespace lodex {

class LogView;

/// The message log with what chooses and copies its entries.
class LogPanel : public QWidget {
    Q_OBJECT

public:
    explicit LogPanel(QWidget* parent = nullptr);

    [[nodiscard]] LogView* view() const { return view_; }

private:
    LogView* view_;
};

} // namespace lodex
