#include "portal/DroppedTexts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include <array>
#include <system_error>

#include "share/Boxes.h"

namespace veltrac {

namespace {

struct KindRow
{
    TextKind kind;
    const char* looks;
    const char* button;
};
constexpr std::array kKinds = {
    KindRow{TextKind::Tsa, "a tsa text", "Read as &tsa text"},
    KindRow{TextKind::Table, "a table of readings (STL)", "Read as ta&ble (STL)"},
    KindRow{TextKind::SingleColumn, "a column of values (SCL)", "Read as &column (SCL)"},
};

}  // namespace

std::optional<TextKind> askTextKind(QWidget* window, const QStringList& texts)
{
    const QString name = QFileInfo(texts.constFirst()).fileName();
    TextKind likely = TextKind::Table;
    try {
        likely = textKind(QFile::encodeName(texts.constFirst()).toStdString());
    } catch (const std::system_error& e) {
        showBox(
            QMessageBox::Warning, window, QStringLiteral("Veltrac"),
            QStringLiteral("%1 cannot be read: %2.").arg(name, QString::fromStdString(e.code().message())));
        return std::nullopt;
    }

    QMessageBox box(QMessageBox::Question, QStringLiteral("Import"), QString(), QMessageBox::Cancel, window);
    box.setTextFormat(Qt::PlainText);
    std::array<QAbstractButton*, kKinds.size()> buttons{};
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
        QPushButton* const button =
            box.addButton(QString::fromLatin1(kKinds[i].button), QMessageBox::AcceptRole);
        buttons[i] = button;
        if (kKinds[i].kind != likely)
            continue;
        box.setDefaultButton(button);
        box.setText(QStringLiteral("%1 looks like %2.").arg(name, QString::fromLatin1(kKinds[i].looks)));
    }
    if (texts.size() > 1)
        box.setInformativeText(QStringLiteral("All %1 files are read in the same way.").arg(texts.size()));
    box.exec();
    for (std::size_t i = 0; i < kKinds.size(); ++i)
        if (box.clickedButton() == buttons[i])
            return kKinds[i].kind;
    return std::nullopt;
}

QString shownName(const QString& path)
{
    const QFileInfo file(path);
    return QDir(file.absolutePath()) == QDir::current() ? file.fileName() : file.absoluteFilePath();
}

}  // namespace veltrac
