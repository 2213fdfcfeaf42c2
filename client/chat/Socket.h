#pragma once

#include <QObject>
#include <QString>
#include <memory>

// The chat connection: signs one user in to the chat server and carries chat messages and
// presence. It runs on the thread's Qt event loop (no thread of its own) and raises its events
// only from there, never from inside a call, so a handler may call back into the socket,
// connect it anew or delete it.
//
// A sign-in the server refuses (unknown user or wrong password) shows as an XML event whose
// text is exactly "<error code='401'>Unauthorized</error>" and ends the connection without an
// Error event; the program then connects again with newAccount set, which registers the
// account first and signs in on a fresh connection.
class Socket : public QObject {
    Q_OBJECT
public:
    explicit Socket(QObject* parent = nullptr);
    ~Socket() override; // drops the connection quietly: no events from here on

    // Starts connecting and returns at once (always 0). `server` is the chat host and the
    // domain of the user's address; `one` and `two` are unused. Any earlier connection is
    // dropped quietly first.
    long Connect(const QString& server, long port, const QString& user, const QString& password,
                 const QString& resource, long one, long two, bool newAccount);
    // Sends a chat message to a full address; only `jid` and `text` are used. Raises
    // Error(…, "Not Connected") while not signed in. Returns 0.
    long SendMessage(const QString& jid, const QString& unused, const QString& text,
                     bool unusedFlag = false, const QString& unused2 = {},
                     const QString& unused3 = {});
    bool IsConnected() const; // signed in and the session is up

signals:
    void Authenticated();
    void Chat(const QString& fullJID, const QString& unused, const QString& Body,
              const QString& Subject, const QString& RichText, const QString& XHTML,
              const QString& timeStamp);
    void Error(long Number, const QString& Description);
    void Presence(const QString& fullJID, long Status, const QString& StatusText,
                  const QString& other);
    void XML(long dataDirection, const QString& xTagXML); // 0 received, 1 sent

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
