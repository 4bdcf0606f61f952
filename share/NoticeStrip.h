// A strip above a plot that tells what the user should know: "test.ts has changed." with a button.
#pragma once

#include <QFrame>

class QLabel;
class QPushButton;

namespace veltrac {

class NoticeStrip : public QFrame
{
    Q_OBJECT

public:
    explicit NoticeStrip(QWidget* parent = nullptr);

    // Shows the text, with a button where one is named.
    void showNotice(const QString& text, const QString& button = QString());
    QString text() const;

signals:
    void x_pressed();

private:
    QLabel* m_text;
    QPushButton* m_button;
};

}  // namespace veltrac
