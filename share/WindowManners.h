// What every window owes those who work without a mouse or with a question mark for a pointer.
#pragma once

#include <QMainWindow>

namespace veltrac {

// A window in which Tab goes through the fields as they are read: part by part, in each from left to right
// and from top to bottom; whatever it shows by then, wherever its docks and tool bars have been put.
class ReadingWindow : public QMainWindow
{
public:
    using QMainWindow::QMainWindow;

protected:
    bool focusNextPrevChild(bool next) override;
};

// "What's this?" answers with the tool tip where nothing else is said, and of a label with what its field
// says.
void explainByTips(QWidget& window);

}  // namespace veltrac
