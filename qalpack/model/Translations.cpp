// SPDX-License-Identifier: MIT
#include "qalpack/model/Translations.h"

#include <memory>

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

namespace qal {

namespace {

// The translator LoadTranslations installed. The application owns it, so it
// goes with the application.
QPointer<QTranslator>& installedTranslator()
{
    static QPointer<QTranslator> translator;
    return translator;
}

} // namespace

bool LoadTranslations(const QLocale& locale)
{
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return false;
    if (QTranslator* previous = installedTranslator().data()) {
        QCoreApplication::removeTranslator(previous);
        delete previous;
    }
    if (locale.language() == QLocale::English || locale.language() == QLocale::C)
        return false;

    auto translator = std::make_unique<QTranslator>(app);
    const QString override = qEnvironmentVariable("QALPACK_TRANSLATIONS_DIR");
    auto load = [&translator, &override](const QLocale& wanted) {
        const QString name = QStringLiteral("qalpack");
        const QString prefix = QStringLiteral("_");
        return (!override.isEmpty() && translator->load(wanted, name, prefix, override))
            || translator->load(wanted, name, prefix, QStringLiteral(":/qalpack/i18n"));
    };
    // Traditional Chinese anywhere reads the Hong Kong texts rather than English.
    const bool loaded = load(locale)
        || (locale.language() == QLocale::Chinese && locale.script() == QLocale::TraditionalChineseScript
            && load(QLocale(QLocale::Chinese, QLocale::TraditionalChineseScript, QLocale::HongKong)));
    if (!loaded)
        return false;
    QCoreApplication::installTranslator(translator.get());
    installedTranslator() = translator.release();
    return true;
}

} // namespace qal
