#pragma once

#include <QByteArray>
#include <QtGlobal>

// Sets an environment variable of the test process until the end of the scope.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const QByteArray& value)
        : name_(name), hadValue_(qEnvironmentVariableIsSet(name)), previous_(qgetenv(name)) {
        qputenv(name_, value);
    }
    ~ScopedEnvironment() {
        if (hadValue_)
            qputenv(name_, previous_);
        else
            qunsetenv(name_);
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* name_;
    bool hadValue_;
    QByteArray previous_;
};
