#pragma once

#include <QCommandLineParser>

// Adds options that take a value, one line each, with a default where one is given.
class OptionAdder {
public:
    explicit OptionAdder(QCommandLineParser& parser) : m_parser(parser) {}
    void operator()(const char* name, const char* description, const char* valueName,
                    const char* fallback = "") const {
        m_parser.addOption({QLatin1String(name), QLatin1String(description),
                            QLatin1String(valueName), QLatin1String(fallback)});
    }

private:
    QCommandLineParser& m_parser;
};
