// SPDX-License-Identifier: MIT
// The symbol mapping table: loaded from the shared OMS INI file when the
// configuration sets it up, absent otherwise; codes matched without case.
#include "qalpack/omslib/ConvertSymbolMgr.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

class SymbolMapTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir_.isValid());
        savedOmsIni_ = qgetenv("OMS_INI");
        internal::ResetSymbolMapCtrl();
    }

    void TearDown() override
    {
        internal::ResetSymbolMapCtrl();
        qputenv("OMS_INI", savedOmsIni_);
    }

    void useOmsIni(const QByteArray& text)
    {
        const QString path = dir_.filePath(QStringLiteral("oms.ini"));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        qputenv("OMS_INI", QFile::encodeName(path));
    }

private:
    QTemporaryDir dir_;
    QByteArray savedOmsIni_;
};

TEST_F(SymbolMapTest, TheTableComesFromTheOmsIniAndMapsCodesWithoutRegardToCase)
{
    useOmsIni("[OMS_LOCAL]\nCPATH=.\n[SYMBOL_MAP]\n00005=0005.HK\nhsif5 = HSIF5.HFE\n=lost\nempty=\n");
    TConvertSymbolMgr* table = SymbolMapCtrl();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->Count(), 2) << "lines without a code or a mapped code are skipped";
    EXPECT_EQ(table->GetSymbol(QStringLiteral("00005")), u"0005.HK");
    EXPECT_EQ(table->GetSymbol(QStringLiteral("HSIF5")), u"HSIF5.HFE");
    EXPECT_EQ(table->GetSymbol(QStringLiteral("00700")), u"00700") << "unknown codes pass unchanged";
    EXPECT_EQ(table->GetSymbol(QStringLiteral("empty")), u"empty");
}

TEST_F(SymbolMapTest, ThereIsNoTableWhenTheConfigurationSetsNoneUp)
{
    useOmsIni("[OMS_LOCAL]\nCPATH=.\n");
    EXPECT_EQ(SymbolMapCtrl(), nullptr);
    useOmsIni("[SYMBOL_MAP]\n00005=0005.HK\n");
    EXPECT_EQ(SymbolMapCtrl(), nullptr) << "the answer is kept for the process";

    internal::ResetSymbolMapCtrl();
    qunsetenv("OMS_INI");
    EXPECT_EQ(SymbolMapCtrl(), nullptr);
}

} // namespace
} // namespace qal
