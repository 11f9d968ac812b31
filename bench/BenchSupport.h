#pragma once

#include "engine/VaultManager.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QList>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace bench {

// A vault of the benchmark's own, created and opened in folders that go with it.
struct OpenVault {
    QTemporaryDir runtime, support;
    VaultManager vault{openIn(runtime, support)};

    static QString openIn(const QTemporaryDir& runtime, const QTemporaryDir& support) {
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
        return support.path();
    }
    OpenVault() {
        vault.setIdleTimeoutSeconds(0);
        vault.createVault(QStringLiteral("bench"));
        vault.unlock(QStringLiteral("bench"));
    }
};

// `count` files of 4 KiB, a thousand to a folder.
inline void makeSmallFiles(const QString& folder, int count) {
    QByteArray bytes(4096, 'x');
    for (int i = 0; i < count; ++i) {
        const QString sub = folder + QStringLiteral("/%1").arg(i / 1000);
        if (i % 1000 == 0)
            QDir().mkpath(sub);
        QFile file(sub + QStringLiteral("/file-%1.txt").arg(i));
        file.open(QIODevice::WriteOnly);
        bytes[0] = char(i);
        file.write(bytes);
    }
}

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
