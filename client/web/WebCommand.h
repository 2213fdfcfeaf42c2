#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

// One line between the tray program and tavlo-web. The tray writes commands on tavlo-web's
// standard input, so that the form body (which holds the password) never shows in the
// process list or the environment; tavlo-web answers with lines on its standard output.
// Fields are tab-separated; free bytes go base64-encoded, so every command is one line.
//   navigate <url> <body or "-" for a GET> <headers>   open a page in the window
//   show                                               show the window (maximized)
//   loaded <1|0> <n>                                   (answer) the page of the n-th navigate
//                                                      (from 1) finished loading
//   shown <title>                                      (answer) the window is up, maximized
struct WebCommand {
    enum class Kind { Unknown, Navigate, Show, Loaded, Shown };
    Kind kind = Kind::Unknown;
    QUrl url;
    QByteArray postData; // null for a GET
    QByteArray headers;  // "Name: value" lines, each ending in CR LF
    QByteArray text;     // "loaded": "1" or "0"; "shown": the window's title
    int number = 0;      // "loaded": which navigate of the run, counted from 1

    static WebCommand navigate(const QUrl& url, const QByteArray& postData,
                               const QByteArray& headers) {
        return {Kind::Navigate, url, postData, headers, {}, 0};
    }
    static WebCommand reply(Kind kind, const QByteArray& text, int number = 0) {
        return {kind, {}, {}, {}, text, number};
    }

    QByteArray encode() const {
        switch (kind) {
        case Kind::Navigate:
            return "navigate\t" + url.toEncoded().toBase64() + '\t' +
                   (postData.isNull() ? QByteArray("-") : postData.toBase64()) + '\t' +
                   headers.toBase64() + '\n';
        case Kind::Show:
            return "show\n";
        case Kind::Loaded:
            return "loaded\t" + text + '\t' + QByteArray::number(number) + '\n';
        case Kind::Shown:
            return "shown\t" + text + '\n';
        case Kind::Unknown:
            break;
        }
        return {};
    }

    static WebCommand decode(const QByteArray& line) {
        // Not trimmed: an empty last field (no headers) ends the line in a tab.
        const QList<QByteArray> fields = line.split('\t');
        const QByteArray& verb = fields.first();
        if (verb == "navigate" && fields.size() == 4) {
            const QByteArray& body = fields[2];
            return navigate(QUrl::fromEncoded(QByteArray::fromBase64(fields[1])),
                            body == "-" ? QByteArray() : decodedBody(body),
                            QByteArray::fromBase64(fields[3]));
        }
        if (verb == "show")
            return {Kind::Show, {}, {}, {}, {}, 0};
        if (verb == "loaded" && fields.size() == 3)
            return reply(Kind::Loaded, fields[1], fields[2].toInt());
        if (verb == "shown" && fields.size() == 2)
            return reply(Kind::Shown, fields[1]);
        return {};
    }

private:
    // An empty body stays a body (an empty POST), unlike "-".
    static QByteArray decodedBody(const QByteArray& field) {
        const QByteArray bytes = QByteArray::fromBase64(field);
        return bytes.isNull() ? QByteArray("", 0) : bytes;
    }
};
