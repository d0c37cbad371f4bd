#pragma once

#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/qtools/LQMultiComboBox.h>
#include <Lodex/utils/CString.h>

#include <QPointer>

namespace Kelvane {

/// Keeps a selection list filled with the names of one kind of items of a grid (its properties, its regions) and
/// refills it whenever the grid changes. What was selected stays selected as far as it is still there.
class SGridObserver : public Lodex::GObjObserver {
public:
    /// The combo is not owned. list_key says which names the grid is asked for. The extra entry, when it is to be
    /// added, stands before all names or after them; extra_entry_only shows it alone, whatever the grid holds.
    SGridObserver(Lodex::LQMultiComboBox* combo, const Lodex::CString& list_key, const Lodex::CString& extra_entry,
                  bool add_extra_entry, bool extra_entry_first, bool extra_entry_only);
    SGridObserver(const SGridObserver&) = default;
    SGridObserver& operator=(const SGridObserver&) = default;
    ~SGridObserver() override = default;

    /// Refills the combo from the observed grid, whatever component is given.
    void update(Lodex::Component* component) override;
    /// The observed grid goes away: the combo ends up empty.
    void disconnect(Lodex::Component* component) override;

    /// Inserts one text at position 0 or at the end.
    virtual void insert_item(const Lodex::CString& text, bool at_top);
    virtual void insert_item(const char* text, bool at_top);
    virtual void clear();

    /// Observes the stratigraphic grid of this name from now on (none when there is no such grid) and refills the
    /// combo.
    void update_gobj(const Lodex::CString& grid_name);

private:
    void fill();

    QPointer<Lodex::LQMultiComboBox> combo_;
    Lodex::CString list_key_;
    bool add_extra_entry_;
    bool extra_entry_first_;
    Lodex::CString extra_entry_;
    bool extra_entry_only_;
};

} // namespace Kelvane
