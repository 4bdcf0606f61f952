// Applications of tests that report an event loop within a paint event. It may resize or close the window,
// which frees its picture beneath the painter that is open: the program ends inside Qt, in whatever paints
// next.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>
#include <QScopedValueRollback>

template <typename Application>
class PaintWatched : public Application
{
public:
    PaintWatched(int& argc, char** argv) : Application(argc, argv)
    {
        const auto* const dispatcher = QAbstractEventDispatcher::instance();
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { look(); });
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] { look(); });
    }

    bool notify(QObject* receiver, QEvent* event) override
    {
        const QScopedValueRollback painter(
            m_painter, event->type() == QEvent::Paint ? receiver->metaObject()->className() : m_painter);
        return Application::notify(receiver, event);
    }

private:
    void look() const
    {
        if (m_painter != nullptr)
            ADD_FAILURE() << "an event loop within the paint event of a " << m_painter;
    }

    const char* m_painter = nullptr;  // whose paint event is under way
};
