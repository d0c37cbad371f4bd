#pragma once

#include <QButtonGroup>
#include <QPointer>

#include <ostream>

class QRadioButton;

namespace Lodex {
class LQDoubleLineEdit;
}

namespace Kelvane {

/// How merged cells come into a region: radio buttons and the percentiles of two of them. The widgets are made here and
/// laid out by the dialog. The number of a mode is its button's id and what the command says.
class RegionModes : public QButtonGroup {
    Q_OBJECT

public:
    enum Mode { AnyCell, NumberPercentile, VolumePercentile, MostProbable };

    explicit RegionModes(QObject* parent);

    /// Makes the button of a mode.
    QRadioButton* add_mode(Mode mode, QWidget* parent);
    /// Makes the field of NumberPercentile or VolumePercentile, whose button must be there.
    Lodex::LQDoubleLineEdit* add_percentile(Mode mode, QWidget* parent);
    /// Checks the button and lets the percentile of its mode be edited.
    void select(Mode mode);
    /// Lets the percentile of this mode, and no other, be edited.
    void enable_percentile(int mode);
    /// " region_mode M percentile P" of a command.
    void write(std::ostream& command) const;

private:
    QPointer<Lodex::LQDoubleLineEdit> number_percentile_;
    QPointer<Lodex::LQDoubleLineEdit> volume_percentile_;
};

} // namespace Kelvane
