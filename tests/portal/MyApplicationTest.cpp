// How escaped and reported exceptions are told, in the running application.

#include <gtest/gtest.h>

#include <QApplication>
#include <QErrorMessage>
#include <QMessageBox>
#include <QProgressDialog>
#include <QTextEdit>
#include <QTimer>

#include <csignal>
#include <stdexcept>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "portal/TsApplication.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

class Listener : public TsApplication
{
public:
    void ShowTsMessage(const QString& text) override { m_texts << text; }
    QStringList m_texts;
};

class Thrower : public QObject
{
public:
    explicit Thrower(std::function<void()> fail) : m_fail(std::move(fail)) {}
    bool event(QEvent* /*event*/) override
    {
        m_fail();
        return true;
    }

private:
    std::function<void()> m_fail;
};

struct Row
{
    std::function<void()> fail;
    const char* reported;  // by ReportTsException()
    const char* escaped;   // in the box of notify(), its white space drawn together
};

template <typename E>
std::function<void()> throwing(E e)
{
    return [e] { throw e; };
}

std::vector<Row> rows()
{
    return {
        {throwing(TS::CREATE_ERROR("a.ts")), "Caught a TS::CREATE_ERROR exception on: a.ts: here",
         "Caught a TS::CREATE_ERROR exception on: a.ts"},
        {throwing(TS::OPEN_ERROR("a.ts")), "Caught a TS::OPEN_ERROR exception on: a.ts: here",
         "Caught a TS::OPEN_ERROR exception on: a.ts"},
        {throwing(TS::NOT_TS_FILE()), "Caught a TS::NOT_TS_FILE exception: here",
         "Caught a TS::NOT_TS_FILE exception"},
        {throwing(TS::IO_ERROR(1024, 100511, 0)),
         "Caught a TS::IO_ERROR exception<br> Offset = 1024<br> last byte = 100511: here",
         "Caught a TS::IO_ERROR exception Offset =1024 nbyt =100511"},
        {throwing(TS::NO_TIME_COLUMN()), "Caught a TS::NO_TIME_COLUMN exception: here",
         "Caught a TS::NO_TIME_COLUMN exception"},
        {throwing(TS::ILL_TIME(1, 2, 0)), "Caught a TS::ILL_TIME exception: here",
         "Caught a TS::ILL_TIME exception"},
        {throwing(TS::ILL_COLUMN(9, 8, 1)), "TS::ILL_COLUMN exception<br> Val1 = 9<br> Val2 = 8: here",
         "Caught a TS::ILL_COLUMN exception Val1 =9 Val2 =8"},
        {throwing(TS::ILL_SAMPLE(4294967295U, 5, 1)),
         "TS::ILL_SAMPLE exception<br> Sample = 4294967295<br> max allowed = 5: here",
         "Caught a TS::ILL_SAMPLE exception"},
        {throwing(TS::READONLY_VIOLATION(512, 0, 1, "a.ts")),
         "TS::READONLY_VIOLATION exception, offset: 512: here", "Caught an unknown exception"},
        {throwing(TS::READONLY_VIOLATION(0, 0, 1, "a.ts")),
         "TS::READONLY_VIOLATION exception, name: a.ts: here", nullptr},
        {throwing(TS::READONLY_VIOLATION(0, 0, 1, "")), "TS::READONLY_VIOLATION exception: here", nullptr},
        {throwing(std::runtime_error("torn")), "torn: here", "torn"},
        {throwing(std::runtime_error("")), nullptr, nullptr},
        {throwing(TS::MAP_ERROR()), "Caught an uspecified exception: here", nullptr},
        {throwing(42), "Caught an uspecified exception: here", nullptr},
    };
}

TEST(ReportTest, eachExceptionIsReportedInItsWords)
{
    for (const Row& row : rows()) {
        Listener listener;
        try {
            row.fail();
        } catch (...) {
            listener.ReportTsException("here");
        }
        EXPECT_EQ(listener.m_texts,
                  row.reported == nullptr ? QStringList() : QStringList(QString::fromLatin1(row.reported)));
    }
}

TEST(ReportTest, anEscapedExceptionIsShownAndTheProgramGoesOn)
{
    QErrorMessage* box = nullptr;
    for (QWidget* const window : QApplication::allWidgets())
        if (auto* const found = qobject_cast<QErrorMessage*>(window))
            box = found;
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Veltrac, core"));
    for (const Row& row : rows()) {
        if (row.escaped == nullptr)
            continue;
        Thrower thrower(row.fail);
        QEvent event(QEvent::User);
        EXPECT_FALSE(QApplication::sendEvent(&thrower, &event));
        EXPECT_TRUE(box->isVisible());
        EXPECT_EQ(box->findChild<QTextEdit*>()->toPlainText().simplified(), QString::fromLatin1(row.escaped));
        box->accept();
    }
}

TEST(ReportTest, numbersKeepTheirPointAndNamesTheirUmlautsInThePlainLocale)
{
    const TestDirectory directory;
    EXPECT_EQ(std::string(std::setlocale(LC_NUMERIC, nullptr)), "C");
    std::unique_ptr<TSFILE> made(TsApplication::instance()->CreateTs(QStringLiteral("Öl €"), 3, 1));
    EXPECT_NE(made, nullptr);
    EXPECT_TRUE(std::filesystem::exists("Öl €.ts"));
    EXPECT_EQ(TsApplication::instance()->OpenTs(QStringLiteral("Wasser.ts"), true), nullptr);
}

// Without them the process would end here, its scratch files left behind.
TEST(QuitSignals, endTheEventLoopAlsoUnderAnOpenBoxAndCancelAJob)
{
    for (const int signal : {SIGTERM, SIGHUP}) {
        QProgressDialog job(QStringLiteral("Filtering"), QStringLiteral("Cancel"), 0, 10);
        job.show();
        bool isBoxGone = false;
        QTimer::singleShot(0, [&] {
            QTimer::singleShot(0, [&] { std::raise(signal); });
            QMessageBox box(QMessageBox::Warning, QStringLiteral("Veltrac"), QStringLiteral("Waits"));
            box.exec();
            isBoxGone = true;
        });
        EXPECT_EQ(QApplication::exec(), 0);
        EXPECT_TRUE(isBoxGone);
        EXPECT_TRUE(job.wasCanceled());
    }
}

}  // namespace
