#pragma once
// A small HTTP/1.1 server for tests, on 127.0.0.1 at a port of the system's choosing, plain
// or over TLS, driven by the test's event loop. Each path has a script saying how to answer;
// every connection carries one request and is closed after the reply ("Connection: close").

#include <QHash>
#include <QSize>
#include <QSslCertificate>
#include <QSslKey>
#include <QStringList>
#include <QTcpServer>

// How to answer one path, for example
//   server.setScript(u"/a.jpg"_s, HttpScript::reply("image/jpeg", jpeg).withDrip(512, 20));
struct HttpScript {
    enum class Ending { Reply, CloseWithoutReply, ResetWithoutReply, NeverReply };

    int status = 200;
    QByteArray contentType{};                       // no Content-Type header when empty
    QList<QPair<QByteArray, QByteArray>> headers{}; // a Content-Length among them replaces the true one
    QByteArray body{};
    QPair<int, int> drip{0, 0}; // bytes at a time (0: all at once), every this many milliseconds
    qint64 cutAt = -1;          // >= 0: send only this many body bytes, then close
    Ending ending = Ending::Reply;

    static HttpScript reply(const QByteArray &type, const QByteArray &body, int status = 200)
    {
        return {.status = status, .contentType = type, .body = body};
    }
    // Read the request, then close, reset (TCP RST) or keep the connection open, silent.
    static HttpScript closeWithoutReply() { return {.ending = Ending::CloseWithoutReply}; }
    static HttpScript resetWithoutReply() { return {.ending = Ending::ResetWithoutReply}; }
    static HttpScript neverReply() { return {.ending = Ending::NeverReply}; }
    static HttpScript redirect(const QString &location, int status = 302)
    {
        return reply("text/html", "moved", status).withHeader("Location", location.toLatin1());
    }

    HttpScript withHeader(const QByteArray &name, const QByteArray &value) const
    {
        return with(&HttpScript::headers, headers + decltype(headers){{name, value}});
    }
    HttpScript withDrip(int bytes, int everyMs) const { return with(&HttpScript::drip, {bytes, everyMs}); }
    HttpScript cutShortAt(qint64 bytes) const { return with(&HttpScript::cutAt, bytes); }
    // A copy with one field changed.
    template <typename T>
    HttpScript with(T HttpScript::*field, const T &value) const
    {
        HttpScript changed = *this;
        changed.*field = value;
        return changed;
    }
};

class ScriptedHttpServer : public QTcpServer {
public:
    explicit ScriptedHttpServer(QObject *parent = nullptr) : QTcpServer(parent)
    {
        listen(QHostAddress::LocalHost, 0);
    }
    // The connections go first, while the scripts they answer from are still here.
    ~ScriptedHttpServer() override { qDeleteAll(findChildren<QTcpSocket *>(Qt::FindDirectChildrenOnly)); }

    quint16 port() const { return serverPort(); }
    // "http://127.0.0.1:<port>" + path, "https://..." over TLS; path starts with "/".
    QString url(const QString &path) const
    {
        return QLatin1String(m_tls.first.isNull() ? "http" : "https")
               + QStringLiteral("://127.0.0.1:%1%2").arg(port()).arg(path);
    }
    // Connections from now on speak TLS with this certificate.
    void useTls(const QSslCertificate &certificate, const QSslKey &key) { m_tls = {certificate, key}; }
    // Paths without a script answer 404 with a small HTML page.
    void setScript(const QString &path, const HttpScript &script) { m_scripts.insert(path, script); }

    // Requests whose head was read completely, by path (query string dropped), in order of arrival.
    QStringList requestLog() const { return m_log; }
    int requestCount(const QString &path) const { return int(m_log.count(path)); }
    int totalRequests() const { return int(m_log.size()); }
    int openConnections() const; // for example silent ones

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void answer(QTcpSocket *socket, const HttpScript &script);

    std::pair<QSslCertificate, QSslKey> m_tls; // a null certificate: plain HTTP
    QHash<QString, HttpScript> m_scripts;
    QStringList m_log;
};

// Made once a test program by the openssl command line; every certificate uses the one key.
struct TestCertificates {
    QSslCertificate authority;
    QSslKey key;
    QSslCertificate trusted;    // for 127.0.0.1, signed by the authority
    QSslCertificate otherHost;  // signed by the authority, for another host name
    QSslCertificate selfSigned; // for 127.0.0.1, signed by itself, not the authority
    static const TestCertificates &get();
};

// A real JPEG picture of the given size: random noise (a large file) or a smooth gradient (a small one).
QByteArray makeJpeg(QSize size, bool noisy = false);
