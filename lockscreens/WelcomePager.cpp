#include "WelcomePager.h"

#include <QVariantMap>

WelcomePager::WelcomePager(QObject* parent) : QObject(parent) {
    connect(this, &WelcomePager::pageChanged, this, &WelcomePager::forwardLabelChanged);
    connect(this, &WelcomePager::ctaLabelChanged, this, &WelcomePager::forwardLabelChanged);
}

void WelcomePager::setCtaLabel(const QString& label) {
    if (label == m_ctaLabel)
        return;
    m_ctaLabel = label;
    emit ctaLabelChanged();
}

QString WelcomePager::forwardLabel() const {
    return m_page < totalPages() - 1 ? tr("Next") : m_ctaLabel;
}

void WelcomePager::advance() {
    if (m_page < totalPages() - 1) {
        ++m_page;
        emit pageChanged();
    } else {
        emit continued();
    }
}

void WelcomePager::back() {
    if (m_page == 0)
        return;
    --m_page;
    emit pageChanged();
}

QString WelcomePager::introSubtitle() {
#ifdef Q_OS_MACOS
    return tr("Your Private Vault for macOS");
#else
    return tr("Your Private Vault for Linux");
#endif
}

QVariantList WelcomePager::featureCards() {
    auto card = [](const char* icon, const QString& title, const QString& text) {
        return QVariantMap{{QStringLiteral("icon"), QString::fromLatin1(icon)},
                           {QStringLiteral("title"), title},
                           {QStringLiteral("text"), text}};
    };
#ifdef Q_OS_MACOS
    const QString shortcut =
        tr("Lock everything instantly with \u2318L, or let auto-lock handle it.");
    const QString security = tr("AES-256 encryption powered by Apple's own disk technology.");
    const QString invisible =
        tr("Locked files \u2014 and even apps \u2014 vanish from Finder, Spotlight, and Terminal.");
    const QString nativeTitle = tr("Native macOS");
    const QString nativeText = tr("Built with SwiftUI. Fast, lightweight, no bloat.");
    const QString keyText = tr("Only you hold the key. Nothing leaves your Mac.");
#else
    // The shortcut in its Linux form, as the lock button's help text shows it.
    const QString shortcut =
        tr("Lock everything instantly with Ctrl+L, or let auto-lock handle it.");
    const QString security =
        tr("AES-256 encryption powered by gocryptfs, a proven open-source encryptor.");
    const QString invisible = tr("Locked files \u2014 and even apps \u2014 vanish from your file "
                                 "manager, search, and terminal.");
    const QString nativeTitle = tr("Native Linux");
    const QString nativeText = tr("Built with Qt. Fast, lightweight, no bloat.");
    const QString keyText = tr("Only you hold the key. Nothing leaves your computer.");
#endif
    return {
        card("lock.shield.fill", tr("Bank-grade security"), security),
        card("eye.slash.fill", tr("Truly invisible"), invisible),
        card("command", tr("One password"), shortcut),
        card("bolt.fill", nativeTitle, nativeText),
        card("wifi.slash", tr("Your data stays yours"),
             tr("100% offline. No cloud. No accounts. No tracking.")),
        card("key.fill", tr("Zero-knowledge"), keyText),
    };
}

QString WelcomePager::backupText() {
#ifdef Q_OS_MACOS
    return tr("Gear menu \u2192 Back Up Vault saves one encrypted file you can store anywhere. It "
              "opens in Finder with your master password, even without Morvanta \u2014 so "
              "reinstalling or removing the app won't cost you your files. (A backup still needs "
              "the password; it isn't a way to recover a forgotten one.)");
#else
    return tr("Gear menu \u2192 Back Up Vault saves one encrypted file you can store anywhere. It "
              "opens in any archive manager with your master password, even without Morvanta "
              "\u2014 so reinstalling or removing the app won't cost you your files. (A backup "
              "still needs the password; it isn't a way to recover a forgotten one.)");
#endif
}
