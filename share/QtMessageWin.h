// The read-only window of every help and information text: it is read, printed and closed.
#pragma once

#include <QMainWindow>
#include <QPrinter>

class QPushButton;
class QTextEdit;

class MessageWin : public QMainWindow
{
    Q_OBJECT

public:
    // `text` is HTML; width and height are pixels, fontSize points. An empty title gives "Ts-Information", an
    // empty family the application's font. The window is not yet shown; it deletes itself when it is closed.
    MessageWin(QWidget* parent, const QString& objectName, const QString& text, const QString& title,
               int width, int height, const QString& fontFamily, int fontSize);

public slots:
    // Asks for a printer and prints the whole text. What was chosen is kept while the window lives.
    void sl_print();

    void setVisible(bool visible) override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void makeButtons();

    QPrinter m_printer;
    QTextEdit* m_text;
};

namespace veltrac {

// Shows a help text (resources/help/<name>.html) in a window of its own, as all help windows look. It goes
// with `parent`, whose icon it bears, but stands beside it; the parent may be null.
MessageWin* showHelp(QWidget* parent, const QString& name, const QString& title, int width = 850,
                     int height = 650);

// Gives a window without a Help menu the key F1.
void addHelpKey(QWidget* window, const QString& name, const QString& title);

// Gives a window a Help menu with that text, which has the key F1.
void addHelpMenu(QMainWindow* window, const QString& name, const QString& title);

}  // namespace veltrac
