// SPDX-License-Identifier: MIT
// An order number shown is an order stored: `qal save` processes against a
// real SQLite file while this test reads it and other savers write it. Every
// number a saver printed must be in the database afterwards, every order it
// did not store must have been reported, and no number is handed out twice.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/SaverProcess.h"
#include "tests/support/SourceTree.h"

namespace {

using qal::TDatabase;
using qal::TQuery;
using qal::TSession;
using qal::test::order;
using qal::test::Saver;

// An embedded order database of the test's own, its alias extended by
// `aliasLines` (busy timeout, journal mode), created by `qal db init`.
class SaveConfig
{
public:
    explicit SaveConfig(const QString& aliasLines)
    {
        write("aliases.ini",
            QStringLiteral("[OMSDATA]\nDRIVER=SQLITE\nDATABASE=oms.db\nCREATE=TRUE\n%1\n"
                           "[OMSINI]\nDRIVER=STANDARD\nPATH=.\n")
                .arg(aliasLines));
        write("oms.ini", QStringLiteral("[OMS_LOCAL]\nAliasFile=aliases.ini\n"));
        QFile shipped(
            qal::test::sourcePath(QStringLiteral("config/STORPROC.INI")));
        EXPECT_TRUE(shipped.open(QIODevice::ReadOnly));
        write("STORPROC.INI", QString::fromUtf8(shipped.readAll()));
        QProcess init;
        init.setProcessEnvironment(environment());
        init.start(QStringLiteral(QAL_TOOL_PATH), { "db", "init" });
        EXPECT_TRUE(init.waitForFinished(60000));
        EXPECT_EQ(init.exitCode(), 0) << init.readAllStandardError().toStdString();
        TSession::Default().LoadAliases(dir_.filePath(QStringLiteral("aliases.ini")));
    }

    ~SaveConfig() { TSession::Default().DropConnections(); }

    [[nodiscard]] QString omsIni() const { return dir_.filePath(QStringLiteral("oms.ini")); }

    [[nodiscard]] QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("OMS_INI"), dir_.filePath(QStringLiteral("oms.ini")));
        return environment;
    }

    // A connection of the test's own to the order database.
    [[nodiscard]] std::unique_ptr<TDatabase> database() const
    {
        auto db = std::make_unique<TDatabase>();
        db->SetAliasName(QStringLiteral("OMSDATA"));
        db->SetDatabaseName(QStringLiteral("TESTREADERDB"));
        db->SetLoginPrompt(false);
        return db;
    }

    [[nodiscard]] QSet<QString> storedNumbers() const
    {
        auto db = database();
        TQuery query;
        query.SetDatabaseName(db->DatabaseName());
        query.SQL().Add(QStringLiteral("select Order_No from OMSTrade_File"));
        query.Open();
        QSet<QString> numbers;
        for (; !query.Eof(); query.Next())
            numbers.insert(query.Fields(0).AsString());
        return numbers;
    }

private:
    void write(const QString& name, const QString& text)
    {
        QFile file(dir_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text.toUtf8());
    }

    QTemporaryDir dir_;
};

TEST(QalSave, ALongReaderNeverBlocksTheSavingDesk)
{
    SaveConfig config(QString {});
    auto reader = config.database();
    reader->StartTransaction();
    TQuery reading;
    reading.SetDatabaseName(reader->DatabaseName());
    reading.SQL().Add(QStringLiteral("select count(*) from OMSTrade_File"));
    reading.Open();

    Saver saver(config.omsIni());
    QStringList shown;
    for (int i = 0; i < 3; ++i)
        shown << saver.saveOne(i);
    saver.finish();
    reading.Close();
    reader->Commit();

    EXPECT_TRUE(saver.errors().isEmpty()) << saver.errors().join(u'\n').toStdString();
    ASSERT_EQ(shown.size(), 3);
    for (const QString& number : shown)
        EXPECT_TRUE(config.storedNumbers().contains(number)) << number.toStdString();
}

// In the old journal mode a reader does block the commit. The save that meets
// it must fail and say so, and the saver must go on saving afterwards: a
// commit that failed once must not leave later orders inside a transaction
// that is never committed.
TEST(QalSave, ACommitBlockedByAReaderFailsAloudAndLaterSavesAreStored)
{
    SaveConfig config(QStringLiteral("JOURNAL MODE=DELETE\nBUSY TIMEOUT=200\n"));
    auto reader = config.database();
    reader->StartTransaction();
    TQuery reading;
    reading.SetDatabaseName(reader->DatabaseName());
    reading.SQL().Add(QStringLiteral("select count(*) from OMSTrade_File"));
    reading.Open();

    Saver saver(config.omsIni());
    const QString blocked = saver.saveOne(1);
    reading.Close();
    reader->Commit();
    const QString second = saver.saveOne(2);
    const QString third = saver.saveOne(3);
    saver.finish();

    EXPECT_TRUE(blocked.isEmpty()) << "acknowledged " << blocked.toStdString() << " under a reader";
    ASSERT_EQ(saver.errors().size(), 1) << saver.errors().join(u'\n').toStdString();
    EXPECT_TRUE(saver.errors()[0].contains(u"database is locked")) << saver.errors()[0].toStdString();
    const QSet<QString> stored = config.storedNumbers();
    EXPECT_EQ(stored, (QSet<QString> { second, third }));
    EXPECT_NE(second, third);
}

TEST(QalSave, TwoDesksSavingAtOnceLoseNothingTheyAcknowledged)
{
    constexpr int perSaver = 150;
    const struct
    {
        const char* name;
        const char* aliasLines;
    } cases[] = {
        { "default busy timeout", "" },
        { "busy timeout 0", "BUSY TIMEOUT=0\n" },
        { "busy timeout 0, old journal mode", "BUSY TIMEOUT=0\nJOURNAL MODE=DELETE\n" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SaveConfig config(QString::fromUtf8(c.aliasLines));
        Saver first(config.omsIni());
        Saver second(config.omsIni());
        QByteArray orders;
        for (int i = 0; i < perSaver; ++i)
            orders += order(i);
        first.send(orders);
        second.send(orders);
        first.finish();
        second.finish();

        const QSet<QString> stored = config.storedNumbers();
        QSet<QString> acknowledged;
        for (const Saver* saver : { &first, &second }) {
            EXPECT_EQ(saver->numbers().size() + saver->errors().size(), perSaver)
                << "an order was neither acknowledged nor reported";
            for (const QString& number : saver->numbers()) {
                EXPECT_FALSE(acknowledged.contains(number)) << "number given twice: " << number.toStdString();
                acknowledged.insert(number);
            }
        }
        EXPECT_EQ(stored, acknowledged);
        if (QByteArray(c.aliasLines).isEmpty()) {
            EXPECT_EQ(acknowledged.size(), 2 * perSaver) << "with a busy timeout every save waits its turn";
        }
    }
}

} // namespace
