#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <optional>

// Sets (or, given nothing, clears) an environment variable of the test process until the end of
// the scope.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, std::optional<QByteArray> value)
        : name_(name),
          saved_(qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt) {
        set(value);
    }
    ~ScopedEnvironment() { set(saved_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const std::optional<QByteArray>& value) {
        if (value)
            qputenv(name_, *value);
        else
            qunsetenv(name_);
    }

    const char* name_;
    std::optional<QByteArray> saved_;
};
