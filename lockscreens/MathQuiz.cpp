#include "MathQuiz.h"

#include "MainLoop.h"
#include "engine/VaultManager.h"

MathQuiz::MathQuiz(QObject* parent) : QObject(parent) {}

void MathQuiz::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    m_vault = vault;
    emit vaultChanged();
}

void MathQuiz::setInput(const QString& input) {
    if (input == m_input)
        return;
    m_input = input;
    emit inputChanged();
}

void MathQuiz::setMessage(std::optional<Message> message) {
    if (message == m_message)
        return;
    m_message = message;
    emit messageChanged();
}

void MathQuiz::setBusy(bool busy) {
    if (busy == m_busy)
        return;
    m_busy = busy;
    emit busyChanged();
}

QList<MathQuiz::Op> MathQuiz::allOps() {
    return {Op::add, Op::sub, Op::mul};
}

QString MathQuiz::symbol(Op op) {
    switch (op) {
    case Op::add:
        return QStringLiteral("+");
    case Op::sub:
        return QStringLiteral("\u2212");
    case Op::mul:
        return QStringLiteral("\u00D7");
    }
    return {};
}

QString MathQuiz::question() const {
    return tr("%1 %2 %3 = ?").arg(m_a).arg(symbol(m_op)).arg(m_b);
}

QString MathQuiz::messageText() const {
    if (!m_message)
        return {};
    return *m_message == Message::correct ? tr("Correct!") : tr("Try again");
}

QString MathQuiz::messageSymbol() const {
    if (!m_message)
        return {};
    return *m_message == Message::correct ? QStringLiteral("checkmark.circle.fill")
                                          : QStringLiteral("xmark.circle.fill");
}

QString MathQuiz::buttonLabel() const {
    return m_busy ? tr("Checking...") : tr("Submit");
}

qint64 MathQuiz::expectedAnswer() const {
    qint64 result = 0;
    bool overflow = false;
    switch (m_op) {
    case Op::add:
        overflow = __builtin_add_overflow(m_a, m_b, &result);
        break;
    case Op::sub:
        overflow = __builtin_sub_overflow(m_a, m_b, &result);
        break;
    case Op::mul:
        overflow = __builtin_mul_overflow(m_a, m_b, &result);
        break;
    }
    // The drawn operands are two digits at most; anything else is a broken question.
    if (overflow)
        qFatal("Quiz question overflows");
    return result;
}

QString MathQuiz::trimmed(const QString& text) {
    auto isBlank = [](QChar c) {
        return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space;
    };
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && isBlank(text[start]))
        ++start;
    while (end > start && isBlank(text[end - 1]))
        --end;
    return text.mid(start, end - start);
}

std::optional<qint64> MathQuiz::parseAnswer(const QString& text) {
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('+') || text[i] == QLatin1Char('-'))) {
        negative = text[i] == QLatin1Char('-');
        ++i;
    }
    if (i == text.size())
        return std::nullopt;
    // Built downwards so that the most negative number fits too.
    qint64 value = 0;
    for (; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return std::nullopt;
        if (__builtin_mul_overflow(value, qint64(10), &value) ||
            __builtin_sub_overflow(value, qint64(c - u'0'), &value))
            return std::nullopt;
    }
    if (negative)
        return value;
    if (value == std::numeric_limits<qint64>::min())
        return std::nullopt;
    return -value;
}

qint64 MathQuiz::draw(qint64 lowest, qint64 highest) {
    return lowest + qint64(m_random->bounded(quint32(highest - lowest + 1)));
}

void MathQuiz::setQuestion(Op op, qint64 a, qint64 b) {
    m_op = op;
    m_a = a;
    m_b = b;
    emit questionChanged();
}

void MathQuiz::regenerate() {
    const Op op = allOps().at(int(draw(0, 2)));
    switch (op) {
    case Op::add: {
        const qint64 a = draw(10, 99);
        setQuestion(op, a, draw(10, 99));
        break;
    }
    case Op::sub: {
        // Larger first, so the answer is never negative.
        const qint64 x = draw(10, 99);
        const qint64 y = draw(10, 99);
        setQuestion(op, std::max(x, y), std::min(x, y));
        break;
    }
    case Op::mul: {
        const qint64 a = draw(3, 12);
        setQuestion(op, a, draw(3, 12));
        break;
    }
    }
}

void MathQuiz::submit() {
    if (m_busy)
        return;
    const QString typed = m_input;
    const std::optional<qint64> answer = parseAnswer(trimmed(typed));
    const qint64 expected = expectedAnswer();
    setBusy(true);
    setMessage(std::nullopt);
    runVaultWork(
        this, m_vault, [typed](VaultManager& vault) { vault.unlock(typed); },
        [this, answer, expected](const std::optional<VaultError>& error) {
            if (!error)
                return;
            // Never shown: on this screen a failed unlock is just a quiz answer.
            setMessage(answer == expected ? Message::correct : Message::wrong);
            setInput({});
            regenerate();
            setBusy(false);
            emit graded();
        },
        VaultError::notInitialized());
}
