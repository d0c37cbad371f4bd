#pragma once

#include <QString>

#include <memory>
#include <vector>

class QWidget;

namespace Lodex {
class ICommandStub;
}

namespace lodex {

/// Opens one kind of dialog of the module, one window of it at a time.
class DialogOpener {
public:
    struct Opened {
        QWidget* window = nullptr;
        bool fresh = false; ///< false: it was open and came to the front
    };

    virtual ~DialogOpener() = default;
    /// Fills the dialog from the pending command and shows it. proposed_name is for the object that a new dialog is to
    /// make; dialogs that make none pass over it.
    virtual Opened open(Lodex::ICommandStub& stub, const QString& proposed_name) = 0;
};

/// One dialog of the module: how it stands in menus, and how it is opened.
struct DialogRow {
    const char* id; ///< of its action
    const char* text;
    const char* tip;
    const char* shortcut;
    const char* icon;       ///< of the picture library; empty: none
    const char* suffix;     ///< behind the grid's name, for the proposed name of the new object
    bool on_property;       ///< makes sense for a property, too
    bool in_tool_bar;
    std::unique_ptr<DialogOpener> (*opener)();
};

/// The dialogs that the module has, in the order of the menu. Texts are translated in the context of the main window.
[[nodiscard]] const std::vector<DialogRow>& dialog_rows();

} // namespace lodex
