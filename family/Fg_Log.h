#pragma once

#include <cstdio>
#include <string>

/// The older log, which formats fixed lines onto a file. This library never opens its file, so every writer
/// returns at once; the configuration file parser is built with it.
class Fg_Log {
 public:
    /// `name`, if not null, goes to `OpenLogFile`.
    explicit Fg_Log(const char* name);
    Fg_Log(const Fg_Log&) = delete;
    Fg_Log& operator=(const Fg_Log&) = delete;
    ~Fg_Log();

    /// Does nothing: the log stays closed.
    void OpenLogFile(const char* name);
    /// Flushes and closes an open log.
    void CloseLogFile();

    /// Writes the head of a log with the local time.
    void WriteWelcome();
    /// The local time as `asctime` writes it, newline included.
    std::string GetTimestamp();
    /// Writes the caller's own text; the only writer that does not flush.
    [[gnu::format(printf, 2, 3)]] void UsrDbg(const char* format, ...);
    /// Writes nothing.
    void Info(const char* text);
    void Info(const char* text, int number);
    void Error(const char* text);
    void ErrorInt(const char* where, const char* what, int number);
    /// The value is written with 12 significant digits.
    void ErrorDouble(const char* where, const char* what, double value);
    /// Writes nothing.
    void Func(const char* name);

 protected:
    std::FILE* stream_ = nullptr;  ///< null while closed
};
