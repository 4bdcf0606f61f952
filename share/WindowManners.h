// What every window owes those who work without a mouse or with a question mark for a pointer.
#pragma once

class QWidget;

namespace veltrac {

// Lets Tab go through the window's fields as it is read: part by part, in each from left to right and from
// top to bottom. For a window that is about to be shown or has just been given more fields.
void tabAsRead(QWidget& window);

// "What's this?" answers with the tool tip where nothing else is said, and of a label with what its field
// says.
void explainByTips(QWidget& window);

}  // namespace veltrac
