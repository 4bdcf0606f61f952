// The base of all sub-programs' windows: top-level, deleted when closed, and announcing both that they are
// gone and that they have changed the directory.
#pragma once

#include "core/SampleRange.h"
#include "share/WindowManners.h"

// What windowGone() hands over: only good for comparing, the window is about to be deleted.
using subWindow = QWidget*;

namespace veltrac {

inline constexpr int kMessageMs = 8000;  // how long the status bar shows what was done

class SubWindow : public ReadingWindow
{
    Q_OBJECT

public:
    explicit SubWindow(QWidget* parent = nullptr);

    // Which samples of its file the opener has in view, as a plot has. A window that works on a range takes
    // it for the one that its fields begin with; the others leave it, as this one does.
    virtual void offerRange(const SampleRange& range);

    // Asks what is to be asked before the window closes; close() then does not ask again. False where it is
    // to stay; stayOpen() forgets the answer.
    bool askToClose();
    void stayOpen() noexcept { m_closeIsAgreed = false; }

    // Before it is shown for the first time the window is made to fit the screen.
    void setVisible(bool visible) override;

signals:
    // Emitted once, when the window was closed.
    void windowGone(subWindow window);
    // A ts-file of the working directory was made, changed or removed.
    void x_directory_changed();
    // The window has made a ts-file of this name in the working directory: it is listed and selected. Stands
    // for x_directory_changed() too.
    void x_file_made(const QString& name);

protected:
    // Whether the window may close now: here a window asks about what is not saved. It is not asked while a
    // job runs or a dialog is open, when no window closes.
    virtual bool mayClose();
    void closeEvent(QCloseEvent* event) override;

private:
    bool m_wasShown = false;
    bool m_closeIsAgreed = false;
};

// For a window that is about to be shown: on a small screen it would hide its own buttons. Only what exceeds
// the available screen is cut off.
void fitToScreen(QWidget& window);

}  // namespace veltrac
