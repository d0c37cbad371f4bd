#include "sgresize/AxisTable.h"

#include <QCheckBox>
#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace Kelvane {

bool AxisTable::is_enabled() const
{
    return enable_box && enable_box->isChecked();
}

AxisTable build_axis_table(QWidget* parent, QVBoxLayout* layout, const QString& enable_text, const QString& enable_tip,
                           const QString& heading, const QStringList& columns)
{
    AxisTable made;
    made.layout = new QVBoxLayout;
    made.layout->setSpacing(4);
    layout->addLayout(made.layout);
    made.enable_box = new QCheckBox(enable_text, parent);
    made.enable_box->setObjectName("enable_box_");
    made.enable_box->setToolTip(enable_tip);
    made.layout->addWidget(made.enable_box);

    made.frame = new QFrame(parent);
    made.frame->setObjectName("sections_frame_");
    made.frame->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    auto* box = new QVBoxLayout(made.frame);
    box->setContentsMargins(4, 4, 4, 4);
    auto* label = new QLabel(heading, made.frame);
    label->setObjectName("sections_heading_");
    box->addWidget(label);

    auto* table = new QTableWidget(0, static_cast<int>(columns.size()), made.frame);
    table->setObjectName("scrollview");
    table->setHorizontalHeaderLabels(columns);
    table->horizontalHeader()->setSectionsClickable(false);
    table->horizontalHeader()->setHighlightSections(false);
    table->verticalHeader()->hide();
    table->setShowGrid(false);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setFocusPolicy(Qt::NoFocus);
    table->setTabKeyNavigation(false);
    table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->viewport()->setBackgroundRole(QPalette::Window);
    made.table = table;
    box->addWidget(table, 1);
    made.layout->addWidget(made.frame, 1);
    made.frame->setEnabled(false);
    return made;
}

} // namespace Kelvane
