// SPDX-License-Identifier: MIT
// The Chinese translation covers every text the library and the desk show:
// nothing unfinished or empty, every text lupdate finds in the code is
// there, placeholders survive, and LoadTranslations switches the screens.
#include <map>
#include <set>

#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "qalpack/feedback/SystemAlert.h"
#include "qalpack/forms/OrderBlotterModel.h"
#include "qalpack/model/ResourceLabel.h"
#include "qalpack/model/Translations.h"
#include "tests/support/SourceTree.h"

namespace qal::test {
namespace {

struct Message
{
    QString translation;
    QString type; // "unfinished", "vanished", "obsolete" or empty
};

// (context, source) -> translation of a .ts file.
std::map<std::pair<QString, QString>, Message> readTs(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QDomDocument document;
    EXPECT_TRUE(document.setContent(&file)) << path.toStdString();
    std::map<std::pair<QString, QString>, Message> messages;
    const QDomNodeList contexts = document.elementsByTagName(QStringLiteral("context"));
    for (int c = 0; c < contexts.size(); ++c) {
        const QDomElement context = contexts.at(c).toElement();
        const QString name = context.firstChildElement(QStringLiteral("name")).text();
        for (QDomElement m = context.firstChildElement(QStringLiteral("message")); !m.isNull();
             m = m.nextSiblingElement(QStringLiteral("message"))) {
            const QDomElement translation = m.firstChildElement(QStringLiteral("translation"));
            messages[{ name, m.firstChildElement(QStringLiteral("source")).text() }]
                = { translation.text(), translation.attribute(QStringLiteral("type")) };
        }
    }
    return messages;
}

QString shippedTs()
{
    return sourcePath(QStringLiteral("translations/qalpack_zh_HK.ts"));
}

// The printf placeholders of a text, in order.
QStringList placeholders(const QString& text)
{
    static const QRegularExpression placeholder(QStringLiteral("%(\\.\\d+)?[sdf]"));
    QStringList found;
    for (auto it = placeholder.globalMatch(text); it.hasNext();)
        found << it.next().captured();
    return found;
}

TEST(Translations, EveryTextIsTranslatedAndKeepsItsPlaceholders)
{
    const auto messages = readTs(shippedTs());
    ASSERT_GT(messages.size(), 150u);
    for (const auto& [key, message] : messages) {
        SCOPED_TRACE((key.first + u'/' + key.second).toStdString());
        EXPECT_TRUE(message.type.isEmpty()) << message.type.toStdString();
        EXPECT_FALSE(message.translation.trimmed().isEmpty());
        EXPECT_EQ(placeholders(message.translation), placeholders(key.second));
        // A message line keeps its line break, so the lines of an order
        // confirmation stay apart.
        EXPECT_EQ(message.translation.endsWith(QStringLiteral("\r\n")),
            key.second.endsWith(QStringLiteral("\r\n")));
    }
}

TEST(Translations, CoverEveryTextLupdateFindsInTheCode)
{
    QTemporaryDir dir;
    const QString extracted = dir.filePath(QStringLiteral("extracted_zh_HK.ts"));
    QProcess lupdate;
    lupdate.setWorkingDirectory(sourcePath(QStringLiteral(".")));
    lupdate.start(QStringLiteral(QAL_LUPDATE_PATH),
        { QStringLiteral("-locations"), QStringLiteral("none"), sourcePath(QStringLiteral("qalpack")),
            sourcePath(QStringLiteral("apps/desk")), QStringLiteral("-ts"), extracted });
    ASSERT_TRUE(lupdate.waitForFinished(120000));
    ASSERT_EQ(lupdate.exitCode(), 0) << lupdate.readAllStandardError().toStdString();

    const auto shipped = readTs(shippedTs());
    const auto inCode = readTs(extracted);
    ASSERT_GT(inCode.size(), 150u);
    for (const auto& [key, message] : inCode)
        EXPECT_TRUE(shipped.count(key))
            << "not translated: " << key.first.toStdString() << " / " << key.second.toStdString();
    for (const auto& [key, message] : shipped)
        EXPECT_TRUE(inCode.count(key))
            << "no longer in the code: " << key.first.toStdString() << " / " << key.second.toStdString();
}

TEST(Translations, LoadTranslationsSwitchesEveryLabelAndBack)
{
    struct Case
    {
        const char* name;
        QLocale locale;
        bool translated;
    };
    const Case cases[] = {
        { "Hong Kong", QLocale(QLocale::Chinese, QLocale::TraditionalChineseScript, QLocale::HongKong),
            true },
        { "zh_HK by name", QLocale(QStringLiteral("zh_HK")), true },
        { "Taiwan reads Hong Kong's",
            QLocale(QLocale::Chinese, QLocale::TraditionalChineseScript, QLocale::Taiwan), true },
        { "English", QLocale(QLocale::English, QLocale::UnitedKingdom), false },
        { "C", QLocale::c(), false },
        { "a language without one", QLocale(QLocale::German, QLocale::Germany), false },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(LoadTranslations(c.locale), c.translated);
        if (c.translated) {
            EXPECT_EQ(resLabelOrderTypeBuy(), QStringLiteral("買入"));
            EXPECT_EQ(res_invalidQty(), QStringLiteral("數量無效。"));
            EXPECT_EQ(resStrSystemAlert(), QStringLiteral("系統警示"));
            EXPECT_EQ(
                TOrderBlotterModel::ColumnCaption(TOrderBlotterModel::ColStatus), QStringLiteral("狀態"));
        } else {
            EXPECT_EQ(resLabelOrderTypeBuy(), QStringLiteral("BUY"));
            EXPECT_EQ(resStrSystemAlert(), QStringLiteral("System Alert"));
        }
    }
}

} // namespace
} // namespace qal::test
