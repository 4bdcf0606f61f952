// What file managers take for a ts-file, by the rules that the package installs.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QMimeDatabase>

#include "tests/core/TsFileBytes.h"

namespace {

constexpr std::size_t kHeader = 512;

QString kindOf(const std::string& file)
{
    return QMimeDatabase().mimeTypeForFile(QString::fromStdString(file)).name();
}

TEST(MimeType, HeadersOfAllVersionsAreTsFilesAndFilmsAndTranslationsAreNot)
{
    const TestDirectory directory;
    std::filesystem::create_directories("home/mime/packages");
    ASSERT_TRUE(QFile::copy(QStringLiteral(VELTRAC_MIME), QStringLiteral("home/mime/packages/veltrac.xml")));
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(QDir::currentPath() + QStringLiteral("/home")));

    const QString tsFile = QStringLiteral("application/x-veltrac-ts");
    for (const bool swapped : {false, true}) {
        for (std::uint32_t version = 0; version <= 11; ++version) {
            HandMadeFile(kHeader, swapped)
                .word(0, 1000003)
                .word(4, 17)
                .real(16, version % 2 == 0 ? 0.0025F : 86400.0F)
                .word(508, version)
                .write("unnamed");
            EXPECT_EQ(kindOf("unnamed") == tsFile, version <= 10) << version;
        }
    }
    // Packets of 188 bytes, the first a table of programs, padded with zeros; the other filled with a stream.
    for (const char* const start : {"\x47\x40\0\x10\0\0\xB0\r\0\1\xC1\0\0\0\0\0\x40",
                                    "\x47\x1F\xFF\x10\0\0\1\xE0\0\0\0\0\0\0\0\0\x40"}) {
        HandMadeFile film(kHeader, false);
        for (std::size_t packet = 0; packet < kHeader; packet += 188)
            film.text(packet, std::string(start, 17));
        film.write("film.ts");
        film.write("film");
        EXPECT_NE(kindOf("film"), tsFile);
    }
    HandMadeFile(1000, false).write("zeros");
    HandMadeFile(1000, false).text(0, "<?xml version=\"1.0\"?>\n<!DOCTYPE TS>").write("words");
    HandMadeFile(1000, false).text(0, "import { a }").real(16, 3.0F).write("program");
    for (const char* const other : {"zeros", "words", "program"})
        EXPECT_NE(kindOf(other), tsFile) << other;
    qputenv("XDG_DATA_HOME", before);
}

}  // namespace
