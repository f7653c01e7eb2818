// SPDX-License-Identifier: MIT
#include "qalpack/omslib/omsLog.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include <QByteArray>
#include <QFile>

#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

namespace qal {

namespace {

constexpr char kLogPattern[] = "%Y-%m-%d %H:%M:%S.%e [%l] %v";
constexpr char kDumpPattern[] = "%Y-%m-%d %H:%M:%S.%e %v";

// Plain data, so the level check before any other work needs no
// initialisation guard.
int threshold = omsLogInfo;

struct LogFiles
{
    std::shared_ptr<spdlog::logger> log; // null: standard error
    std::shared_ptr<spdlog::logger> dump; // null: dumps go to the log
    QString logFile;
    QString dumpFile;
    std::shared_ptr<spdlog::logger> standardError;
};

LogFiles& files()
{
    static LogFiles instance;
    return instance;
}

std::shared_ptr<spdlog::logger> makeLogger(std::shared_ptr<spdlog::sinks::sink> sink, const char* pattern)
{
    auto logger = std::make_shared<spdlog::logger>("oms", std::move(sink));
    logger->set_pattern(pattern);
    logger->set_level(spdlog::level::trace);
    logger->flush_on(spdlog::level::trace);
    return logger;
}

spdlog::logger& currentLog()
{
    LogFiles& state = files();
    if (state.log)
        return *state.log;
    if (!state.standardError)
        state.standardError = makeLogger(std::make_shared<spdlog::sinks::stderr_sink_st>(), kLogPattern);
    return *state.standardError;
}

int clampLevel(int level)
{
    return std::clamp(level, int(omsLogError), int(omsLogTrace));
}

spdlog::level::level_enum spdlogLevel(int level)
{
    switch (clampLevel(level)) {
    case omsLogError:
        return spdlog::level::err;
    case omsLogWarning:
        return spdlog::level::warn;
    case omsLogInfo:
        return spdlog::level::info;
    case omsLogDebug:
        return spdlog::level::debug;
    default:
        return spdlog::level::trace;
    }
}

void write(spdlog::logger& logger, spdlog::level::level_enum level, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    logger.log(level, spdlog::string_view_t(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

std::shared_ptr<spdlog::logger> openFile(const QString& fileName, const char* pattern)
{
    const QByteArray path = QFile::encodeName(fileName);
    auto sink
        = std::make_shared<spdlog::sinks::basic_file_sink_st>(std::string(path.constData(), path.size()));
    return makeLogger(std::move(sink), pattern);
}

} // namespace

void omsLogMsg(const QString& text, int level) noexcept
{
    if (clampLevel(level) > threshold)
        return;
    try {
        write(currentLog(), spdlogLevel(level), text);
    } catch (...) {
        // The log is the last resort for reporting; nothing is left to tell.
    }
}

bool omsLogEnabled(int level) noexcept
{
    return clampLevel(level) <= threshold;
}

void omsLogSetLevel(int level) noexcept
{
    threshold = clampLevel(level);
}

int omsLogGetLevel() noexcept
{
    return threshold;
}

bool omsLogOpen(const QString& logFile, const QString& dumpFile) noexcept
{
    try {
        std::shared_ptr<spdlog::logger> log = openFile(logFile, kLogPattern);
        std::shared_ptr<spdlog::logger> dump;
        if (!dumpFile.isEmpty())
            dump = openFile(dumpFile, kDumpPattern);
        LogFiles& state = files();
        state.log = std::move(log);
        state.dump = std::move(dump);
        state.logFile = logFile;
        state.dumpFile = dumpFile;
        return true;
    } catch (const std::exception& error) {
        omsLogMsg(QStringLiteral("Cannot open the log \"%1\" (dump \"%2\"): %3")
                      .arg(logFile, dumpFile, QString::fromLocal8Bit(error.what())),
            omsLogError);
    } catch (...) {
        omsLogMsg(
            QStringLiteral("Cannot open the log \"%1\" (dump \"%2\")").arg(logFile, dumpFile), omsLogError);
    }
    return false;
}

void omsLogClose() noexcept
{
    LogFiles& state = files();
    state.log.reset();
    state.dump.reset();
    state.logFile.clear();
    state.dumpFile.clear();
}

QString omsLogFileName()
{
    return files().logFile;
}

QString omsDumpFileName()
{
    return files().dumpFile;
}

void omsDumpMsg(const QString& text) noexcept
{
    try {
        LogFiles& state = files();
        if (state.dump)
            write(*state.dump, spdlog::level::info, text);
        else
            omsLogMsg(text, omsLogDebug);
    } catch (...) {
        // As omsLogMsg: a dump that cannot be written is lost.
    }
}

} // namespace qal
