#include "converters/SCLFileList.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

#include "converters/ImportFields.h"
#include "converters/ImportTexts.h"

namespace veltrac {

namespace {

enum FileColumn { kFileName, kSourceName, kSourceUnit, kSourceDescription };

}  // namespace

SCLFileList::SCLFileList(QWidget* parent) : QWidget(parent), m_table(new QTableWidget(0, 4))
{
    m_table->setHorizontalHeaderLabels({QStringLiteral("File"), QStringLiteral("Name"),
                                        QStringLiteral("Unit"), QStringLiteral("Description")});
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->setAccessibleName(QStringLiteral("The files, each a column"));
    m_table->horizontalHeader()->setStretchLastSection(true);
    connect(m_table, &QTableWidget::itemChanged, this, [this] {
        if (!m_filling)
            emit x_changed();
    });
    connect(m_table, &QTableWidget::itemSelectionChanged, this, &SCLFileList::x_selected);

    struct Button
    {
        const char* text;
        void (SCLFileList::*signal)();
        const char* help;
        QPushButton** kept;
    };
    QPushButton* addButton = nullptr;
    auto* const buttons = new QVBoxLayout;
    for (const Button& button :
         {Button{"&Add...", &SCLFileList::x_add, "Choose more files.", &addButton},
          Button{"&Remove", &SCLFileList::x_remove, "Leave the selected file out.", &m_remove},
          Button{"&Up", &SCLFileList::x_up, "Make the selected file an earlier column.", &m_up},
          Button{"&Down", &SCLFileList::x_down, "Make the selected file a later column.", &m_down}}) {
        *button.kept = importButton(button.text, button.help);
        connect(*button.kept, &QPushButton::clicked, this, button.signal);
        buttons->addWidget(*button.kept);
    }
    buttons->addStretch();
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table, 1);
    layout->addLayout(buttons);
}

void SCLFileList::show(const std::vector<SCLSource>& sources)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_table->setRowCount(static_cast<int>(sources.size()));
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const SCLSource& source = sources[static_cast<std::size_t>(row)];
        const std::array<QString, 4> texts = {
            shown(source.file.filename().string()), QString::fromStdString(source.name),
            QString::fromStdString(source.unit), QString::fromStdString(source.description)};
        for (int column = 0; column < 4; ++column) {
            auto* const item = new QTableWidgetItem(texts[static_cast<std::size_t>(column)]);
            if (column == kFileName) {
                item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
                item->setToolTip(shown(source.file.string()));
            }
            m_table->setItem(row, column, item);
        }
    }
    // The last one fills the rest.
    for (int column = kFileName; column < kSourceDescription; ++column)
        m_table->resizeColumnToContents(column);
}

void SCLFileList::read(std::vector<SCLSource>& sources) const
{
    const auto textAt = [this](int row, FileColumn column) {
        return m_table->item(row, column)->text().toStdString();
    };
    for (int row = 0; row < m_table->rowCount(); ++row) {
        SCLSource& source = sources[static_cast<std::size_t>(row)];
        source.name = textAt(row, kSourceName);
        source.unit = textAt(row, kSourceUnit);
        source.description = textAt(row, kSourceDescription);
    }
}

int SCLFileList::current() const
{
    return m_table->currentRow();
}

void SCLFileList::select(int row)
{
    m_table->selectRow(std::min(row, m_table->rowCount() - 1));
}

void SCLFileList::enableButtons()
{
    m_remove->setEnabled(current() >= 0);
    m_up->setEnabled(current() > 0);
    m_down->setEnabled(current() >= 0 && current() + 1 < m_table->rowCount());
}

}  // namespace veltrac
