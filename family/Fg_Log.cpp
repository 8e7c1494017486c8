#include "family/Fg_Log.h"

#include <array>
#include <cstdarg>
#include <ctime>

namespace {

[[gnu::format(printf, 2, 3)]] void writeLine(std::FILE* stream, const char* format, ...) {
    if (stream == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stream, format, arguments);
    va_end(arguments);
    std::fflush(stream);
}

}  // namespace

Fg_Log::Fg_Log(const char* name) {
    if (name != nullptr) {
        OpenLogFile(name);
    }
}

Fg_Log::~Fg_Log() {
    CloseLogFile();
}

void Fg_Log::OpenLogFile(const char* /*name*/) {}

void Fg_Log::CloseLogFile() {
    if (stream_ != nullptr) {
        std::fflush(stream_);
        std::fclose(stream_);
        stream_ = nullptr;
    }
}

void Fg_Log::WriteWelcome() {
    const std::string dashes(73, '-');
    writeLine(stream_, "%s\n", dashes.c_str());
    writeLine(stream_, "Tavr frame grabber software, applet libMarovine\n");
    writeLine(stream_, "Contents: Log details for orbicard Dll\n");
    writeLine(stream_, "%s", GetTimestamp().c_str());
    writeLine(stream_, "%s\n", dashes.c_str());
}

std::string Fg_Log::GetTimestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    std::array<char, 64> text{};
    localtime_r(&now, &local);
    return asctime_r(&local, text.data()) != nullptr ? text.data() : "\n";
}

void Fg_Log::UsrDbg(const char* format, ...) {
    if (stream_ == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stream_, format, arguments);
    va_end(arguments);
}

void Fg_Log::Info(const char* /*text*/) {}

void Fg_Log::Info(const char* text, int number) {
    writeLine(stream_, "orbicardIV::Info >> %s >> %d;\n", text, number);
}

void Fg_Log::Error(const char* text) {
    writeLine(stream_, "orbicardIV::Error >> %s;\n", text);
}

void Fg_Log::ErrorInt(const char* where, const char* what, int number) {
    writeLine(stream_, "orbicardIV::Error >> %s >> %s >> %d;\n", where, what, number);
}

void Fg_Log::ErrorDouble(const char* where, const char* what, double value) {
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "%.*g", 12, value);
    writeLine(stream_, "orbicardIV::Error >> %s >> %s >> %s;\n", where, what, number.data());
}

void Fg_Log::Func(const char* /*name*/) {}
