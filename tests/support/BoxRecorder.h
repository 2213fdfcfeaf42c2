#pragma once

#include "base/MsgBox.h"
#include <QList>
#include <QStringList>

// The message boxes the program shows, kept instead of shown; install() empties the list and
// answers each box with `answer` (OK unless a test says otherwise).
struct BoxRecorder : QList<MsgBoxCall> {
    int answer = int(vb::vbOK);

    void install() {
        clear();
        answer = int(vb::vbOK);
        SetMsgBoxHook([this](const MsgBoxCall& call) {
            append(call);
            return answer;
        });
    }
    QStringList texts() const {
        QStringList out;
        for (const auto& box : *this)
            out << box.text;
        return out;
    }
};
