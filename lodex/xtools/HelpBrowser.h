#pragma once

#include <QTextBrowser>

class QTimer;

namespace lodex {

/// Shows pages whose pictures are never wider than the text.
class HelpBrowser : public QTextBrowser {
    Q_OBJECT

public:
    explicit HelpBrowser(QWidget* parent = nullptr);

    QVariant loadResource(int type, const QUrl& name) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] int picture_width() const;
    void fit_pictures();

    QTimer* settled_; ///< runs while the width changes
    int fitted_width_ = 0; ///< that the pictures were made for; 0: there are none yet
};

} // namespace lodex
