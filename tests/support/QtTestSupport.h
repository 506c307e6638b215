#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <memory>

#include "LumoKit/base/Language.h"

namespace lumo::test {

/// One QCoreApplication for a test program, in English. Add it once per program with
/// testing::AddGlobalTestEnvironment(new lumo::test::QtEnvironment("Name")).
class QtEnvironment : public testing::Environment {
public:
    explicit QtEnvironment(const char* programName) : m_name(programName) {}

    void SetUp() override {
        static int argc = 1;
        static char* argv[] = {const_cast<char*>(m_name), nullptr};
        m_application = std::make_unique<QCoreApplication>(argc, argv);
        L10n::setCurrent(AppLanguage::english);
    }
    // The application goes before static destruction begins, while Qt's globals still exist.
    void TearDown() override {
        m_application.reset();
        L10n::setCurrent(AppLanguage::system);
    }

private:
    const char* m_name;
    std::unique_ptr<QCoreApplication> m_application;
};

} // namespace lumo::test
