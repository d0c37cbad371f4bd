#include "sgresize/LQSGAxisEditorMngr.h"

#include "sgresize/LQSGSectionDialog.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>

#include <array>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

LQSGAxisEditorMngr::LQSGAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog)
    : direction_(new Lodex::StringValue), axis_name_(axis_name), dialog_(dialog)
{
    set_axis();
}

bool LQSGAxisEditorMngr::build_editor_axis(QWidget*, QVBoxLayout*)
{
    return false;
}

QString LQSGAxisEditorMngr::axis_text(int axis)
{
    switch (axis) {
    case 1:
        return tr("Axis I");
    case 2:
        return tr("Axis J");
    case 3:
        return tr("Axis K");
    default:
        return {};
    }
}

int LQSGAxisEditorMngr::known_axis() const
{
    for (int axis = 1; axis <= 3; ++axis) {
        if (axis_name_ == axis_text(axis))
            return axis;
    }
    return 0;
}

void LQSGAxisEditorMngr::report_unknown_axis()
{
    Logger::error(Format(to_cstring(tr("Internal error: could not determined axis...\n"))));
    Logger::error(Format(to_cstring(tr("Please report the problem\n"))));
}

void LQSGAxisEditorMngr::set_axis()
{
    static constexpr std::array<const char*, 3> keywords{"first axis", "second axis", "vertical"};
    if (const int number = axis())
        direction_->set(keywords[static_cast<std::size_t>(number - 1)]);
}

void LQSGAxisEditorMngr::set_axis(const QString& axis_name)
{
    axis_name_ = axis_name;
    set_axis();
}

int LQSGAxisEditorMngr::axis() const
{
    const int number = known_axis();
    if (number == 0)
        report_unknown_axis();
    return number;
}

Lodex::CopyCString LQSGAxisEditorMngr::get_axis_direction() const
{
    return direction_->value();
}

void LQSGAxisEditorMngr::updatePaintedSections()
{
    if (dialog_)
        dialog_->updatePaintedSections();
}

void LQSGAxisEditorMngr::updateCells()
{
    if (dialog_)
        dialog_->updateCells();
}

} // namespace Kelvane
