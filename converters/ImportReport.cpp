#include "converters/ImportReport.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <array>

#include "converters/ImportTexts.h"
#include "share/GroupedNumber.h"

namespace veltrac {

namespace {

// The least of both kinds: a long summary makes the box higher.
constexpr QSize kWithTroubles(680, 420);
constexpr QSize kPlain(520, 130);

QTableWidget* troubleTable(const QVector<ImportTrouble>& troubles)
{
    auto* const table = new QTableWidget(static_cast<int>(troubles.size()), 4);
    table->setHorizontalHeaderLabels({QStringLiteral("Place"), QStringLiteral("Column"),
                                      QStringLiteral("Trouble"), QStringLiteral("What stands there")});
    table->setAccessibleName(QStringLiteral("Places that were not understood"));
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    table->verticalHeader()->hide();
    for (int row = 0; row < troubles.size(); ++row) {
        const ImportTrouble& trouble = troubles[row];
        const std::array<QString, 4> texts = {trouble.place, trouble.column, trouble.what, trouble.text};
        for (int c = 0; c < 4; ++c)
            table->setItem(row, c, new QTableWidgetItem(texts[static_cast<std::size_t>(c)]));
    }
    table->resizeColumnsToContents();
    table->horizontalHeader()->setStretchLastSection(true);
    return table;
}

}  // namespace

ImportReport::ImportReport(QWidget* parent, const QString& title, const QString& summary,
                           const QVector<ImportTrouble>& troubles, std::uint64_t troubleCount, bool offerPlot)
    : QDialog(parent)
{
    setWindowTitle(title);
    auto* const layout = new QVBoxLayout(this);
    auto* const label = new QLabel(summary);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(label);
    if (!troubles.isEmpty()) {
        layout->addWidget(troubleTable(troubles), 1);
        if (troubleCount > static_cast<std::uint64_t>(troubles.size()))
            layout->addWidget(new QLabel(QStringLiteral("The first %1 of %2 places.")
                                             .arg(groupedNumber(static_cast<std::uint64_t>(troubles.size())),
                                                  groupedNumber(troubleCount))));
    }
    auto* const buttons = new QDialogButtonBox;
    if (offerPlot) {
        QPushButton* const plot = buttons->addButton(QStringLiteral("&Plot"), QDialogButtonBox::ActionRole);
        connect(plot, &QPushButton::clicked, this, &QDialog::accept);
    }
    QPushButton* const close = buttons->addButton(QStringLiteral("&Close"), QDialogButtonBox::RejectRole);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    close->setDefault(true);
    layout->addWidget(buttons);
    close->setFocus();
    const QSize least = troubles.isEmpty() ? kPlain : kWithTroubles;
    label->ensurePolished();
    resize(least.expandedTo({0, layout->totalHeightForWidth(least.width())}));
}

}  // namespace veltrac
