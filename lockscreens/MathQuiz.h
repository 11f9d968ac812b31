#pragma once

#include "engine/VaultManager.h"

#include <QObject>
#include <QPointer>
#include <QRandomGenerator>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>

// The arithmetic drill that is really a lock screen: whatever is submitted is first tried
// as the password, exactly as typed, and only when that fails graded as an answer. It never
// shows a password error, which is the point of the disguise.
class MathQuiz : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(qint64 a READ a NOTIFY questionChanged)
    Q_PROPERTY(qint64 b READ b NOTIFY questionChanged)
    Q_PROPERTY(Op op READ op NOTIFY questionChanged)
    Q_PROPERTY(QString question READ question NOTIFY questionChanged)
    Q_PROPERTY(QString input READ input WRITE setInput NOTIFY inputChanged)
    Q_PROPERTY(bool hasMessage READ hasMessage NOTIFY messageChanged)
    Q_PROPERTY(bool correct READ correct NOTIFY messageChanged)
    Q_PROPERTY(QString messageText READ messageText NOTIFY messageChanged)
    Q_PROPERTY(QString messageSymbol READ messageSymbol NOTIFY messageChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(QString buttonLabel READ buttonLabel NOTIFY busyChanged)

public:
    enum class Op { add, sub, mul };
    Q_ENUM(Op)
    enum class Message { correct, wrong };
    Q_ENUM(Message)

    explicit MathQuiz(QObject* parent = nullptr);

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);
    qint64 a() const { return m_a; }
    qint64 b() const { return m_b; }
    Op op() const { return m_op; }
    // "47 − 12 = ?"
    QString question() const;
    QString input() const { return m_input; }
    void setInput(const QString& input);
    std::optional<Message> message() const { return m_message; }
    bool hasMessage() const { return m_message.has_value(); }
    bool correct() const { return m_message == Message::correct; }
    QString messageText() const;
    QString messageSymbol() const;
    bool busy() const { return m_busy; }
    QString buttonLabel() const;

    qint64 expectedAnswer() const;

    static QList<Op> allOps();
    static QString symbol(Op op);
    // Spaces and tabs at both ends go; a line break stays.
    static QString trimmed(const QString& text);
    // A base-10 signed 64-bit number with at most one leading sign, nothing else.
    static std::optional<qint64> parseAnswer(const QString& text);

    // Questions come from the system's secure source unless a test gives another.
    void setRandomSource(QRandomGenerator* random) { m_random = random; }
    void setQuestion(Op op, qint64 a, qint64 b);

    // Draws a new question; the answer box and the grade are the callers' to clear.
    Q_INVOKABLE void regenerate();
    Q_INVOKABLE void submit();

signals:
    void vaultChanged();
    void questionChanged();
    void inputChanged();
    void messageChanged();
    void busyChanged();
    // An answer was graded and the next question is up.
    void graded();

private:
    qint64 draw(qint64 lowest, qint64 highest);
    void setMessage(std::optional<Message> message);
    void setBusy(bool busy);

    QPointer<VaultManager> m_vault;
    QRandomGenerator* m_random = QRandomGenerator::system();
    qint64 m_a = 0;
    qint64 m_b = 0;
    Op m_op = Op::add;
    QString m_input;
    std::optional<Message> m_message;
    bool m_busy = false;
};
