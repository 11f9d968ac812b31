#include "Translation.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QTranslator>

namespace {

bool install(const QLocale& locale, const QString& name, const QStringList& folders) {
    auto* translator = new QTranslator(QCoreApplication::instance());
    for (const QString& folder : folders) {
        if (translator->load(locale, name, QStringLiteral("_"), folder)) {
            QCoreApplication::installTranslator(translator);
            return true;
        }
    }
    delete translator;
    return false;
}

} // namespace

void installTranslation(const QLocale& locale) {
    // Built into the program first; then installed beside it, where a packager may add more.
    const QString installed = QDir(QCoreApplication::applicationDirPath())
                                  .filePath(QStringLiteral("../share/morvanta/translations"));
    install(locale, QStringLiteral("morvanta"), {QStringLiteral(":/i18n"), installed});
    install(locale, QStringLiteral("qtbase"), {QLibraryInfo::path(QLibraryInfo::TranslationsPath)});
}
