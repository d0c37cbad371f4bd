#pragma once

#include <Lodex/xtools/XMShell.h>

#include <memory>

class QDialog;

namespace Lodex {

/// A top-level window around a dialog body. Owns the body from construction on.
class XMQShell : public XMShell {
    Q_OBJECT

public:
    XMQShell(QWidget* body, const CString& name, const QString& title);
    ~XMQShell() override;

    [[nodiscard]] QWidget* widget() const override;
    void show() override;
    void close() override;
    [[nodiscard]] QString title() const override;

    /// The open shells, oldest first; each is found by its name.
    [[nodiscard]] static XMQShell* find(const CString& name);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace Lodex
