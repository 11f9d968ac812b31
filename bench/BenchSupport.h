#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace bench {

inline double median(QList<double> values) {
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n == 0 ? 0.0 : n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

inline double millisecondsOf(const std::function<void()>& step) {
    QElapsedTimer timer;
    timer.start();
    step();
    return double(timer.nsecsElapsed()) / 1e6;
}

// One measured pair: Morvanta's operation and the raw tools doing the same work.
struct Comparison {
    QString name;
    QList<double> morvanta;
    QList<double> raw;
};

inline void printTable(const QString& title, const QList<Comparison>& rows, int runs) {
    std::printf("\n%s (median of %d runs)\n\n", qPrintable(title), runs);
    std::printf("| %-26s | %12s | %12s | %7s |\n", "operation", "Morvanta ms", "raw ms", "ratio");
    std::printf("|%s|%s|%s|%s|\n", "----------------------------", "--------------",
                "--------------", "---------");
    for (const Comparison& row : rows) {
        const double m = median(row.morvanta), r = median(row.raw);
        std::printf("| %-26s | %12.1f | %12.1f | %6.2fx |\n", qPrintable(row.name), m, r,
                    r > 0 ? m / r : 0.0);
    }
    std::fflush(stdout);
}

} // namespace bench
