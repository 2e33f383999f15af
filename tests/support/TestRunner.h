#pragma once

#include <QObject>

#include <functional>
#include <memory>

/// Adds a test class to its binary. The binary runs the class that its first argument names, all without one;
/// the remaining arguments are QtTest's.
class TestRegistration
{
public:
    TestRegistration(const char *name, std::function<std::unique_ptr<QObject>()> make);
};

#define NIVORA_TEST(Class)                                                                                   \
    static const TestRegistration registration##Class(#Class, [] { return std::make_unique<Class>(); });
