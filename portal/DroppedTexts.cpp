#include "portal/DroppedTexts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include <array>

#include "share/Boxes.h"

namespace veltrac {

namespace {

struct KindRow
{
    ImportKind kind;
    const char* looks;
    const char* button;
};
constexpr std::array kKinds = {
    KindRow{ImportKind::Tsa, "a tsa text", "Read as &tsa text"},
    KindRow{ImportKind::Stl, "a table of readings (STL)", "Read as ta&ble (STL)"},
    KindRow{ImportKind::Scl, "a column of values (SCL)", "Read as &column (SCL)"},
};

}  // namespace

std::optional<ImportKind> askImportKind(QWidget* window, const QStringList& texts)
{
    const QString name = QFileInfo(texts.constFirst()).fileName();
    const ImportKind likely = importKindOf(QFile::encodeName(texts.constFirst()).toStdString());
    if (likely == ImportKind::None) {
        showBox(QMessageBox::Warning, window, QStringLiteral("Veltrac"),
                QStringLiteral("%1 holds no text with numbers that could be imported.").arg(name));
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
