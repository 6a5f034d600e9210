#pragma once
// A small HTTP/1.1 server for tests, on 127.0.0.1 at a port of the system's
// choosing, plain or over TLS. It lives in the test's own thread and is driven by its event loop.
// Each path has a script saying how to answer; every connection carries one
// request and is closed after the reply ("Connection: close").

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPair>
#include <QSize>
#include <QSslCertificate>
#include <QSslKey>
#include <QString>
#include <QStringList>

class QTcpServer;
class QTcpSocket;
class HttpExchange;

// How to answer one path, for example
//   server.setScript(u"/a.jpg"_s, HttpScript::reply("image/jpeg", jpeg).withDrip(512, 20));
struct HttpScript {
    enum class Ending {
        Reply,             // answer normally
        CloseWithoutReply, // read the request, then close the connection without a byte
        ResetWithoutReply, // read the request, then reset the connection (TCP RST)
        NeverReply,        // read the request and keep the connection open, silent
    };

    int status = 200;
    QByteArray contentType;                       // no Content-Type header when empty
    QList<QPair<QByteArray, QByteArray>> headers; // further headers, sent as given; a
                                                  // Content-Length among them replaces the true one
    QByteArray body;
    int dripBytes = 0;      // > 0: send the body this many bytes at a time ...
    int dripIntervalMs = 0; // ... every this many milliseconds
    qint64 cutAt = -1;      // >= 0: send only this many body bytes, then close;
                            // Content-Length still announces the whole body
    Ending ending = Ending::Reply;

    static HttpScript reply(const QByteArray &contentType, const QByteArray &body, int status = 200);
    static HttpScript closeWithoutReply();
    static HttpScript resetWithoutReply();
    static HttpScript neverReply();
    // A 302 (or the given status) to location.
    static HttpScript redirect(const QString &location, int status = 302);

    HttpScript withHeader(const QByteArray &name, const QByteArray &value) const;
    HttpScript withDrip(int bytes, int everyMs) const;
    HttpScript cutShortAt(qint64 bytes) const;
};

class ScriptedHttpServer : public QObject {
    Q_OBJECT
public:
    // Starts listening at once.
    explicit ScriptedHttpServer(QObject *parent = nullptr);
    ~ScriptedHttpServer() override;

    quint16 port() const;
    // "http://127.0.0.1:<port>" + path, "https://..." over TLS; path starts with "/".
    QString url(const QString &path) const;
    // Connections from now on speak TLS with this certificate.
    void useTls(const QSslCertificate &certificate, const QSslKey &key);

    void setScript(const QString &path, const HttpScript &script);
    // Paths without a script answer 404 with a small HTML page.

    // Requests whose head was read completely, by path (query string dropped).
    int requestCount(const QString &path) const;
    int totalRequests() const;
    // Every request's path, in order of arrival.
    QStringList requestLog() const;

    // Connections that are still open (for example silent ones).
    int openConnections() const;

private:
    void accept();
    void readRequest(QTcpSocket *socket, HttpExchange *ex);
    void answer(QTcpSocket *socket, HttpExchange *ex, const HttpScript &script);
    void pump(QTcpSocket *socket, HttpExchange *ex);

    QSslCertificate m_certificate; // null: plain HTTP
    QSslKey m_key;
    QTcpServer *m_server;
    QHash<QString, HttpScript> m_scripts;
    QHash<QString, int> m_counts;
    QStringList m_log;
};

// Certificates made once a test program by the openssl command line: a
// throw-away authority and server certificates that share one key.
struct TestCertificates {
    QSslCertificate authority;
    QSslKey key;
    QSslCertificate trusted;      // for 127.0.0.1, signed by the authority
    QSslCertificate otherHost;    // signed by the authority, for another host name
    QSslCertificate selfSigned;   // for 127.0.0.1, signed by itself
    static const TestCertificates &get();
};

// A real JPEG picture of the given size (it starts with FF D8 and ends with FF D9).
// With noisy set, the picture is random noise, which makes a large file; otherwise a
// smooth gradient, which makes a small one.
QByteArray makeJpeg(QSize size, bool noisy = false, int quality = 90);
