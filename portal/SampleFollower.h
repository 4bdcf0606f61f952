// Keeps the newest sample of a listed file in view while another program writes it, as "tail -f" does.
//
// It stops when the user goes elsewhere in the table. What keeps the file from being read is told, and the
// table stays as it is until it can be read again.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

namespace veltrac {

class SampleTable;

class SampleFollower : public QObject
{
    Q_OBJECT

public:
    // Borrows the table, which lists the file of that path.
    SampleFollower(SampleTable& table, QString path, QObject* parent);

    bool isOn() const { return m_timer.isActive(); }
    void setOn(bool on);

signals:
    void x_rows_came();
    // The file is another one now, or has other counts: it is to be opened again.
    void x_replaced();
    // In the user's words; empty where all is well again.
    void x_trouble(const QString& text);
    // The user went elsewhere.
    void x_stopped();

private:
    void look();
    bool takeNews();
    void toNewest();
    void tellTrouble(const QString& text);

    SampleTable& m_table;
    QString m_path;
    QTimer m_timer;
    int m_row = 0;  // where the last look has left the table
    int m_top = 0;
    QString m_trouble;
};

}  // namespace veltrac
