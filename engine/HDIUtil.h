#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <cstdio> // stdout and stderr are macros on some systems: keep their expansion stable
#include <functional>
#include <optional>

// One run of the disk-image tool.
struct HDIUtilResult {
    int32_t status = -1; // exit status; -1 when the tool could not be started
    QString stdout;      // standard output, UTF-8; empty when it does not decode
    QString stderr;      // standard error, UTF-8; the start error when the tool did not start

    bool operator==(const HDIUtilResult&) const = default;
};

// Told of each line the tool writes to standard output while it runs, without its line feed
// (the tool's progress, "PERCENT:<n>", when asked for with -puppetstrings). May be empty.
using HDIUtilOutputLine = std::function<void(const QString& line)>;

// How the engine runs the tool: argument list (without the program), optional standard
// input text, and who hears its output line by line. Never throws; every failure is in the
// result.
using HDIUtilRunner = std::function<HDIUtilResult(
    const QStringList& args, const std::optional<QString>& stdinText, const HDIUtilOutputLine& onLine)>;

// Runs the disk-image tool to completion. The standard-input text is written as its exact
// UTF-8 bytes, with no terminator, and the pipe is then closed; an empty text still gets a
// pipe. With `onLine`, standard output is read as it arrives; otherwise both outputs are read
// after the tool exits.
HDIUtilResult runHDIUtilProcess(const QStringList& args, const std::optional<QString>& stdinText,
                                const HDIUtilOutputLine& onLine = {});

// The same, for a tool at another path (tests run a build of the tool with a cheaper key
// derivation).
HDIUtilResult runHDIUtilProgram(const QString& program, const QStringList& args,
                                const std::optional<QString>& stdinText,
                                const HDIUtilOutputLine& onLine = {});

// How far the tool has got, from one of its "PERCENT:<n>" lines: 0 to 1, or nothing for any
// other line and for the tool's "not known" (-1).
std::optional<double> parsePercentLine(const QString& line);

// The mount point in the property list that "attach -plist" prints: the first entry of
// "system-entities" with a non-empty "mount-point" text. XML and binary lists are read.
std::optional<QString> parseMountPoint(const QString& plist);
// The same, from raw bytes: binary lists cannot travel as text.
std::optional<QString> parseMountPoint(const QByteArray& plist);

// The mount points of one image in the property list that "info -plist" prints: the
// "system-entities" of each entry of "images" whose "image-path" is that image. Nothing when
// the text is not such a list.
std::optional<QStringList> parseAttachedMountPoints(const QString& plist, const QString& imagePath);
// The same without the mounts whose "owner-alive" is true: what remains was attached by an
// app that has gone, or by one nobody knows of.
std::optional<QStringList> parseStaleMountPoints(const QString& plist, const QString& imagePath);
