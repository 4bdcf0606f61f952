#include "share/QtMessageWin.h"

#include <QApplication>
#include <QCloseEvent>
#include <QIcon>
#include <QMenu>
#include <QMenuBar>
#include <QPrintDialog>
#include <QPushButton>
#include <QShortcut>
#include <QStatusBar>
#include <QTextEdit>

#include "share/Resources.h"
#include "share/SubWindow.h"

using namespace veltrac;

MessageWin::MessageWin(QWidget* parent, const QString& objectName, const QString& text, const QString& title,
                       int width, int height, const QString& fontFamily, int fontSize)
    : QMainWindow(parent), m_text(new QTextEdit(this))
{
    loadResources();
    setObjectName(objectName);
    setAttribute(Qt::WA_DeleteOnClose);
    if (!fontFamily.isEmpty())
        setFont(QFont(fontFamily, fontSize));
    setWindowTitle(title.isEmpty() ? QStringLiteral("Ts-Information") : title);

    m_text->setHtml(text);
    m_text->setReadOnly(true);
    m_text->document()->setDocumentMargin(12);
    m_text->setAccessibleName(windowTitle());
    setCentralWidget(m_text);
    makeButtons();
    resize(width, height);
    m_text->setFocus();
}

void MessageWin::makeButtons()
{
    auto* const ok = new QPushButton(QIcon(QStringLiteral(":/img_Ok")), QStringLiteral("&Ok"), statusBar());
    // setShortcut() takes the place of the mnemonic: the Escape key is the button's one shortcut.
    ok->setShortcut(Qt::Key_Escape);
    ok->setToolTip(QStringLiteral("Close this window (Escape)."));
    connect(ok, &QPushButton::clicked, this, &MessageWin::close);

    auto* const print =
        new QPushButton(QIcon(QStringLiteral(":/img_Print")), QStringLiteral("Print"), statusBar());
    print->setToolTip(QStringLiteral("Print this text."));
    connect(print, &QPushButton::clicked, this, &MessageWin::sl_print);

    statusBar()->addWidget(ok);
    statusBar()->addWidget(print);
}

void MessageWin::sl_print()
{
    QPrintDialog dialog(&m_printer, this);
    if (dialog.exec() == QDialog::Accepted)
        m_text->print(&m_printer);
}

void MessageWin::setVisible(bool visible)
{
    if (visible && !isVisible())
        fitToScreen(*this);
    QMainWindow::setVisible(visible);
}

void MessageWin::closeEvent(QCloseEvent* event)
{
    // The print dialog works for this window.
    event->setAccepted(QApplication::activeModalWidget() == nullptr);
}

MessageWin* veltrac::showHelp(QWidget* parent, const QString& name, const QString& title, int width,
                              int height)
{
    // No child of the window that it explains: a window manager would keep it in front of that one.
    auto* const window = new MessageWin(nullptr, QStringLiteral("messageWin"), helpText(name), title, width,
                                        height, QStringLiteral("Times"), 11);
    if (parent != nullptr) {
        window->setWindowIcon(parent->windowIcon());
        QObject::connect(parent, &QObject::destroyed, window, &QObject::deleteLater);
    }
    window->show();
    return window;
}

void veltrac::addHelpKey(QWidget* window, const QString& name, const QString& title)
{
    QObject::connect(new QShortcut(Qt::Key_F1, window), &QShortcut::activated, window,
                     [window, name, title] { showHelp(window, name, title); });
}

void veltrac::addHelpMenu(QMainWindow* window, const QString& name, const QString& title)
{
    window->menuBar()
        ->addMenu(QStringLiteral("H&elp"))
        ->addAction(QStringLiteral("&Help"), window, [window, name, title] { showHelp(window, name, title); })
        ->setShortcut(QKeySequence::HelpContents);
}
