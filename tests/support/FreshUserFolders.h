#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// Points the user's configuration and runtime folders at fresh temporary ones for the whole
// test process. Make it first thing in main(), before anything reads settings: the settings
// library fixes its folders at its first use. Child processes inherit the folders.
class FreshUserFolders {
public:
    FreshUserFolders()
        : m_config(QDir::tempPath() + QStringLiteral("/tavlo-config-XXXXXX")),
          m_runtime(QDir::tempPath() + QStringLiteral("/tavlo-runtime-XXXXXX")) {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_config.path()));
        QFile::setPermissions(m_runtime.path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime.path()));
    }
    QString configHome() const { return m_config.path(); }
    QString runtimeDir() const { return m_runtime.path(); }

private:
    QTemporaryDir m_config;
    QTemporaryDir m_runtime;
};

// main() for a test class run with fresh user folders and the given application class.
#define TAVLO_TEST_MAIN_WITH(AppClass, TestClass)                                                  \
    int main(int argc, char** argv) {                                                              \
        FreshUserFolders folders;                                                                  \
        AppClass app(argc, argv);                                                                  \
        TestClass test;                                                                            \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
