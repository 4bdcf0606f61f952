// Answers the next modal box or dialog of the program, as a user would by its button.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QProgressDialog>
#include <QTimer>

#include <functional>

class BoxAnswer
{
public:
    // Presses the button of that text; `before` is called first, to fill a dialog's fields.
    explicit BoxAnswer(const QString& button, std::function<void(QWidget&)> before = {})
        : m_button(button), m_before(std::move(before))
    {
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.start();
    }

    bool wasAsked() const { return m_asked; }
    // What a message box said.
    const QString& text() const { return m_text; }
    const QString& title() const { return m_title; }

private:
    void look()
    {
        QWidget* const box = QApplication::activeModalWidget();
        // How far a job is, is no question: on a busy machine a bar comes that elsewhere nobody sees.
        if (box == nullptr || qobject_cast<QProgressDialog*>(box) != nullptr)
            return;
        m_timer.stop();
        m_asked = true;
        m_title = box->windowTitle();
        if (const auto* const message = qobject_cast<QMessageBox*>(box))
            m_text = message->text();
        if (m_before)
            m_before(*box);
        for (QAbstractButton* const button : box->findChildren<QAbstractButton*>())
            if (button->text() == m_button) {
                button->click();
                return;
            }
        box->close();
    }

    QString m_button;
    std::function<void(QWidget&)> m_before;
    QTimer m_timer;
    bool m_asked = false;
    QString m_text;
    QString m_title;
};
