#include "portal/Veltrac.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QShortcutEvent>
#include <QSpinBox>
#include <QStatusBar>
#include <QToolBar>

#include <algorithm>

#include "portal/SubPrograms.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/Resources.h"
#include "share/hydaction.h"

namespace {

constexpr int kLeastRowHeight = 18;
constexpr int kGreatestRowHeight = 30;
constexpr int kFirstRowHeight = 22;
constexpr int kMessageMs = 8000;

}  // namespace

VeltracWin::VeltracWin(QWidget* parent) : QMainWindow(parent)
{
    loadResources();
    setInstance(this);
    QApplication::setFont(QFont(QStringLiteral("Helvetica [Cronyx]"), 8));
    setWindowTitle(QStringLiteral("Veltrac"));
    setWindowIcon(QIcon(QStringLiteral(":/img_Veltrac")));

    createTable();
    createActions();
    createMenus();
    createToolBars();
    m_status = new QLabel(this);
    // A long path is cut at the window's edge instead of widening the window.
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_status->setIndent(6);
    statusBar()->addWidget(m_status, 1);
    connect(this, &VeltracWin::x_new_plotdir, this, &VeltracWin::sl_set_plotdir);
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 42);

    m_visited = QStringList{QDir::currentPath()};
    sl_rowHeight(m_rowHeight->value());
    sl_refresh();
    m_table->setFocus();
}

VeltracWin::~VeltracWin() = default;

// -- What the window is made of --

void VeltracWin::createTable()
{
    m_table = new FileTable(this);
    setCentralWidget(m_table);
    connect(m_table, SIGNAL(cellClicked(int, int)), this, SLOT(sl_itemSelected(int, int)));
    // The keyboard selects as well as the mouse does.
    connect(m_table, &QTableWidget::itemSelectionChanged, this,
            [this] { m_selected = m_table->selectedFile(); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
        sl_itemSelected(row, column);
        sl_listFile();
    });
    connect(m_table, &FileTable::x_menu_wanted, this, &VeltracWin::showContextMenu);
    connect(m_table->horizontalHeader(), SIGNAL(sectionClicked(int)), this, SLOT(sl_refresh()));
}

void VeltracWin::createActions()
{
    for (const ActionRow& row : actionRows()) {
        const QString image = QString::fromLatin1(row.image);
        const QString what = QString::fromUtf8(row.whatsThis);
        auto* const made =
            new HydAction(image, QKeySequence(QString::fromLatin1(row.shortcut)), this, row.slot,
                          QString::fromLatin1(row.text), QString::fromLatin1(row.toolTip),
                          what.isEmpty() ? what : whatsThisText(image, what));
        made->setCheckable(row.checkable);
        made->setEnabled(!row.window || subProgramExists(*row.window));
        made->installEventFilter(this);
        // Keys work whatever bar or menu shows the action.
        addAction(made);
        m_actions[row.id] = made;
    }
    auto* const quit = new QAction(QIcon(QStringLiteral(":/img_FlushDown")), QStringLiteral("&Quit"), this);
    connect(quit, SIGNAL(triggered()), qApp, SLOT(closeAllWindows()));
    m_actions[ActionId::Quit] = quit;
}

void VeltracWin::createMenus()
{
    for (const BarRow& row : menuRows()) {
        QMenu* const menu = menuBar()->addMenu(QString::fromLatin1(row.title));
        for (const BarItem& item : row.items) {
            if (item.action)
                menu->addAction(action(*item.action));
            else if (item.gap == Gap::FileMenus)
                createFileMenus(menu);
            else
                menu->addSeparator();
        }
    }
}

void VeltracWin::createFileMenus(QMenu* menu)
{
    m_fileMenus = new FileMenus(this);
    for (const FileActionRow& row : fileActionRows()) {
        QMenu* const files = menu->addMenu(action(row.action)->icon(), QString::fromLatin1(row.menuText));
        files->setEnabled(action(row.action)->isEnabled());
        connect(files, SIGNAL(triggered(QAction*)), this, row.menuSlot);
        m_fileMenus->add(files);
    }
}

void VeltracWin::createToolBars()
{
    for (const BarRow& row : toolBarRows()) {
        QToolBar* const bar = addToolBar(QString::fromLatin1(row.title));
        bar->setObjectName(QString::fromLatin1(row.title));
        for (const BarItem& item : row.items) {
            if (item.action)
                bar->addAction(action(*item.action));
            else
                addRowHeight(bar);
        }
        bar->setHidden(row.hidden);
    }
}

void VeltracWin::addRowHeight(QToolBar* bar)
{
    auto* const label = new QLabel(QStringLiteral("  Rowheight: "), bar);
    m_rowHeight = new QSpinBox(bar);
    m_rowHeight->setRange(kLeastRowHeight, kGreatestRowHeight);
    m_rowHeight->setValue(kFirstRowHeight);
    m_rowHeight->setAccessibleName(QStringLiteral("Row height"));
    m_rowHeight->setToolTip(QStringLiteral("The height of the table's rows, in pixels."));
    m_rowHeight->setWhatsThis(m_rowHeight->toolTip());
    label->setBuddy(m_rowHeight);
    connect(m_rowHeight, SIGNAL(valueChanged(int)), this, SLOT(sl_rowHeight(int)));
    bar->addWidget(label);
    bar->addWidget(m_rowHeight);
}

// -- The table --

int VeltracWin::nOOfTsFiles()
{
    m_files = scanTsFiles([this](const QString& name) {
        showBox(
            QMessageBox::Warning, this, QStringLiteral("Veltrac error, nOOfTsFiles()"),
            QStringLiteral("Found a corrupt ts-file: ") + name + QStringLiteral(".\nThe file is ignored"));
    });
    return static_cast<int>(m_files.size());
}

void VeltracWin::sl_refresh()
{
    // A box about a corrupt file is open: what it interrupts is this very refresh.
    if (m_refreshing)
        return;
    m_refreshing = true;
    nOOfTsFiles();
    m_refreshing = false;
    showFiles();
}

void VeltracWin::showFiles()
{
    m_table->fill(m_files, m_sorted);
    m_selected = m_table->selectedFile();
    std::vector<QString> names;
    names.reserve(m_files.size());
    for (const TsFileRecord& file : m_files)
        names.push_back(file.name);
    m_fileMenus->setFiles(std::move(names));

    const QString path = QDir::currentPath();
    m_status->setText(QStringLiteral("Current working directory: %1 with %2 off ts-files.")
                          .arg(path, QString::number(m_files.size())));
    m_status->setToolTip(path);
    m_status->show();
}

void VeltracWin::sl_itemSelected(int row, int /*column*/)
{
    const QString name = m_table->fileAt(row);
    if (name.isEmpty())
        return;
    // A click with Ctrl takes the mark away; the file that was clicked stays the selected one.
    if (m_table->selectedFile() != name)
        m_table->select(name);
    m_selected = name;
}

void VeltracWin::showContextMenu(int row, const QPoint& globalPosition)
{
    sl_itemSelected(row, 0);
    QMenu menu(this);
    for (const FileActionRow& entry : fileActionRows()) {
        QAction* const chosen = menu.addAction(
            action(entry.action)->icon(), QString::fromLatin1(entry.contextText).arg(menuText(m_selected)),
            this, entry.contextSlot);
        chosen->setEnabled(action(entry.action)->isEnabled());
    }
    menu.exec(globalPosition);
}

void VeltracWin::sl_rowHeight(int pixels)
{
    m_table->setRowHeights(pixels);
}

void VeltracWin::sl_set_sorting()
{
    m_sorted = action(ActionId::Sorting)->isChecked();
    showFiles();
}

// -- Events --

void VeltracWin::closeEvent(QCloseEvent* event)
{
    if (JobProgress::isRunning()) {
        event->ignore();
        return;
    }
    // Without the portal the other windows have nobody to open their files: they close first, and one that
    // holds unsaved work can stop this.
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window != this && window->isVisible() && window->windowType() == Qt::Window && !window->close()) {
            event->ignore();
            return;
        }
    }
    QMainWindow::closeEvent(event);
}

bool VeltracWin::eventFilter(QObject* watched, QEvent* event)
{
    // A key that several actions share runs none of them; the status bar says which ones it could mean.
    if (event->type() == QEvent::Shortcut && static_cast<QShortcutEvent*>(event)->isAmbiguous()) {
        const QKeySequence key = static_cast<QShortcutEvent*>(event)->key();
        QStringList names;
        for (const ActionRow& row : actionRows()) {
            if (action(row.id)->shortcut() == key && action(row.id)->isEnabled())
                names << action(row.id)->text().remove(QLatin1Char('&'));
        }
        say(QStringLiteral("%1 stands for several actions; choose one in a menu: %2")
                .arg(key.toString(QKeySequence::NativeText), names.join(QStringLiteral(", "))));
    }
    return QMainWindow::eventFilter(watched, event);
}

void VeltracWin::say(const QString& text)
{
    statusBar()->showMessage(text, kMessageMs);
}
