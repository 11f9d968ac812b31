#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

// Paging through the welcome pages: forward to the last page, then out through `continued`;
// back to the first. Each showing starts on the first page.
class WelcomePager : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString ctaLabel READ ctaLabel WRITE setCtaLabel NOTIFY ctaLabelChanged)
    Q_PROPERTY(int page READ page NOTIFY pageChanged)
    Q_PROPERTY(int totalPages READ totalPages CONSTANT)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY pageChanged)
    Q_PROPERTY(QString forwardLabel READ forwardLabel NOTIFY forwardLabelChanged)
    Q_PROPERTY(QString introSubtitle READ introSubtitle CONSTANT)
    Q_PROPERTY(QVariantList featureCards READ featureCards CONSTANT)
    Q_PROPERTY(QString backupText READ backupText CONSTANT)

public:
    explicit WelcomePager(QObject* parent = nullptr);

    QString ctaLabel() const { return m_ctaLabel; }
    void setCtaLabel(const QString& label);
    int page() const { return m_page; }
    int totalPages() const { return 3; }
    bool canGoBack() const { return m_page > 0; }
    QString forwardLabel() const;

    // The texts that name the platform; the rest of the pages' wording is fixed.
    static QString introSubtitle();
    // Each card as {icon, title, text}, in the order shown.
    static QVariantList featureCards();
    static QString backupText();

    Q_INVOKABLE void advance();
    Q_INVOKABLE void back();

signals:
    void ctaLabelChanged();
    void pageChanged();
    void forwardLabelChanged();
    // The last page's button was pressed.
    void continued();

private:
    QString m_ctaLabel;
    int m_page = 0;
};
