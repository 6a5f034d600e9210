#include "support/http_server.h"

#include <QBuffer>
#include <QFile>
#include <QHostAddress>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/socket.h>

namespace {

// Bytes handed to the socket at a time when the body is not dripped; the next
// piece follows once the socket has written most of the last one, so a large
// body is never copied whole into the socket's buffer.
constexpr qint64 pieceSize = 256 * 1024;
constexpr qint64 maxHeadSize = 64 * 1024;

// Hands each connection over as a socket that speaks TLS when the server does.
class Listener : public QTcpServer {
public:
    Listener(QObject *parent, const QSslCertificate &certificate, const QSslKey &key)
        : QTcpServer(parent), m_certificate(certificate), m_key(key)
    {
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        if (m_certificate.isNull()) {
            QTcpServer::incomingConnection(descriptor);
            return;
        }
        auto *socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        socket->setLocalCertificate(m_certificate);
        socket->setPrivateKey(m_key);
        socket->setPeerVerifyMode(QSslSocket::VerifyNone);
        connect(socket, &QSslSocket::sslErrors, socket, [socket] { socket->abort(); });
        socket->startServerEncryption();
        addPendingConnection(socket);
    }

private:
    const QSslCertificate &m_certificate;
    const QSslKey &m_key;
};

} // namespace

// What one connection is doing; a child of its socket, so it dies with it.
class HttpExchange : public QObject {
public:
    using QObject::QObject;
    QByteArray head;      // the request head as far as it has arrived
    bool requestRead = false;
    bool answering = false; // the reply's head has been written
    QByteArray body;      // the body being sent
    qint64 sent = 0;      // bytes of body written to the socket so far
    qint64 limit = 0;     // bytes of body to send in all
    QTimer *drip = nullptr;
};

HttpScript HttpScript::reply(const QByteArray &contentType, const QByteArray &body, int status)
{
    HttpScript script;
    script.status = status;
    script.contentType = contentType;
    script.body = body;
    return script;
}

HttpScript HttpScript::closeWithoutReply()
{
    HttpScript script;
    script.ending = Ending::CloseWithoutReply;
    return script;
}

HttpScript HttpScript::resetWithoutReply()
{
    HttpScript script;
    script.ending = Ending::ResetWithoutReply;
    return script;
}

HttpScript HttpScript::neverReply()
{
    HttpScript script;
    script.ending = Ending::NeverReply;
    return script;
}

HttpScript HttpScript::withHeader(const QByteArray &name, const QByteArray &value) const
{
    HttpScript script = *this;
    script.headers.append({name, value});
    return script;
}

HttpScript HttpScript::withDrip(int bytes, int everyMs) const
{
    HttpScript script = *this;
    script.dripBytes = bytes;
    script.dripIntervalMs = everyMs;
    return script;
}

HttpScript HttpScript::cutShortAt(qint64 bytes) const
{
    HttpScript script = *this;
    script.cutAt = bytes;
    return script;
}

HttpScript HttpScript::redirect(const QString &location, int status)
{
    return reply("text/html", "moved", status).withHeader("Location", location.toLatin1());
}

ScriptedHttpServer::ScriptedHttpServer(QObject *parent)
    : QObject(parent), m_server(new Listener(this, m_certificate, m_key))
{
    connect(m_server, &QTcpServer::newConnection, this, &ScriptedHttpServer::accept);
    m_server->listen(QHostAddress::LocalHost, 0);
}

ScriptedHttpServer::~ScriptedHttpServer()
{
    for (QTcpSocket *socket : m_server->findChildren<QTcpSocket *>()) {
        socket->disconnect(this);
        socket->abort();
        socket->deleteLater();
    }
}

quint16 ScriptedHttpServer::port() const { return m_server->serverPort(); }

QString ScriptedHttpServer::url(const QString &path) const
{
    const QLatin1String scheme(m_certificate.isNull() ? "http" : "https");
    return QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(port()).arg(path);
}

void ScriptedHttpServer::useTls(const QSslCertificate &certificate, const QSslKey &key)
{
    m_certificate = certificate;
    m_key = key;
}

void ScriptedHttpServer::setScript(const QString &path, const HttpScript &script) { m_scripts.insert(path, script); }

int ScriptedHttpServer::requestCount(const QString &path) const { return m_counts.value(path); }

int ScriptedHttpServer::totalRequests() const { return int(m_log.size()); }

QStringList ScriptedHttpServer::requestLog() const { return m_log; }

int ScriptedHttpServer::openConnections() const
{
    int open = 0;
    for (const QTcpSocket *socket : m_server->findChildren<QTcpSocket *>())
        open += socket->state() == QAbstractSocket::ConnectedState ? 1 : 0;
    return open;
}

void ScriptedHttpServer::accept()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        auto *ex = new HttpExchange(socket);
        connect(socket, &QTcpSocket::readyRead, ex, [this, socket, ex] { readRequest(socket, ex); });
        connect(socket, &QTcpSocket::bytesWritten, ex, [this, socket, ex] { pump(socket, ex); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void ScriptedHttpServer::readRequest(QTcpSocket *socket, HttpExchange *ex)
{
    if (ex->requestRead) {
        socket->readAll(); // one request a connection; anything after it is ignored
        return;
    }
    ex->head += socket->readAll();
    const qsizetype end = ex->head.indexOf("\r\n\r\n");
    if (end < 0) {
        if (ex->head.size() > maxHeadSize)
            socket->abort();
        return;
    }
    ex->requestRead = true;
    ex->head.truncate(end + 4);

    // Request line: method, target, version. The target may be in absolute form.
    const QList<QByteArray> words = ex->head.left(ex->head.indexOf("\r\n")).split(' ');
    QByteArray target = words.size() > 1 ? words.at(1) : QByteArray("/");
    if (target.startsWith("http://")) {
        const qsizetype slash = target.indexOf('/', 7);
        target = slash < 0 ? QByteArray("/") : target.mid(slash);
    }
    const qsizetype query = target.indexOf('?');
    if (query >= 0)
        target.truncate(query);
    const QString path = QString::fromLatin1(target);
    ++m_counts[path];
    m_log.append(path);

    const auto found = m_scripts.constFind(path);
    const HttpScript script = found != m_scripts.constEnd()
        ? *found
        : HttpScript::reply("text/html; charset=iso-8859-1", "<html><body>404 Not Found</body></html>", 404);
    answer(socket, ex, script);
}

void ScriptedHttpServer::answer(QTcpSocket *socket, HttpExchange *ex, const HttpScript &script)
{
    if (script.ending == HttpScript::Ending::NeverReply)
        return;
    if (script.ending == HttpScript::Ending::CloseWithoutReply) {
        socket->disconnectFromHost();
        return;
    }
    if (script.ending == HttpScript::Ending::ResetWithoutReply) {
        // Closing with a zero linger time makes the system send a reset, not a FIN.
        const linger now{1, 0};
        ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
        socket->abort();
        return;
    }
    QByteArray head = "HTTP/1.1 " + QByteArray::number(script.status) + (script.status == 200 ? " OK\r\n" : " Status\r\n");
    bool lengthGiven = false;
    for (const auto &[name, value] : script.headers) {
        lengthGiven = lengthGiven || name.compare("Content-Length", Qt::CaseInsensitive) == 0;
        head += name + ": " + value + "\r\n";
    }
    if (!script.contentType.isEmpty())
        head += "Content-Type: " + script.contentType + "\r\n";
    if (!lengthGiven)
        head += "Content-Length: " + QByteArray::number(script.body.size()) + "\r\n";
    head += "Connection: close\r\n\r\n";
    socket->write(head);

    ex->answering = true;
    ex->body = script.body;
    ex->sent = 0;
    ex->limit = script.cutAt >= 0 ? qMin(script.cutAt, qint64(script.body.size())) : script.body.size();
    if (script.dripBytes > 0) {
        ex->drip = new QTimer(ex);
        ex->drip->setInterval(script.dripIntervalMs);
        connect(ex->drip, &QTimer::timeout, this, [this, socket, ex, step = qint64(script.dripBytes)] {
            const qint64 n = qMin(step, ex->limit - ex->sent);
            socket->write(ex->body.constData() + ex->sent, n);
            ex->sent += n;
            if (ex->sent >= ex->limit) {
                ex->drip->stop();
                socket->disconnectFromHost();
            }
        });
        ex->drip->start();
        return;
    }
    pump(socket, ex);
}

void ScriptedHttpServer::pump(QTcpSocket *socket, HttpExchange *ex)
{
    if (ex->drip || !ex->answering || socket->state() != QAbstractSocket::ConnectedState)
        return;
    while (ex->sent < ex->limit && socket->bytesToWrite() < pieceSize) {
        const qint64 n = qMin(pieceSize, ex->limit - ex->sent);
        socket->write(ex->body.constData() + ex->sent, n);
        ex->sent += n;
    }
    if (ex->sent >= ex->limit)
        socket->disconnectFromHost();
}

QByteArray makeJpeg(QSize size, bool noisy, int quality)
{
    QImage image(size, QImage::Format_RGB32);
    QRandomGenerator random(quint32(size.width() * 7919 + size.height()));
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            line[x] = noisy ? QRgb(random.generate() | 0xff000000u)
                            : qRgb(x * 255 / qMax(1, size.width() - 1), y * 255 / qMax(1, size.height() - 1), 128);
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", quality);
    return bytes;
}

const TestCertificates &TestCertificates::get()
{
    static const TestCertificates made = [] {
        QTemporaryDir dir;
        const char *script = R"(set -e
key="-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes"
openssl req -x509 $key -keyout ca.key -out ca.pem -days 2 -subj "/CN=Tolmara Test Authority"
openssl ecparam -name prime256v1 -genkey -noout -out server.key
sign() { openssl req -new -key server.key -out "$1.csr" -subj "/CN=$2"; printf "subjectAltName=$3\n" >"$1.ext"
  openssl x509 -req -in "$1.csr" -CA ca.pem -CAkey ca.key -CAcreateserial -days 2 -extfile "$1.ext" -out "$1.pem"; }
sign trusted 127.0.0.1 IP:127.0.0.1,DNS:localhost
sign other other.invalid DNS:other.invalid
openssl req -x509 -key server.key -out self.pem -days 2 -subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1
)";
        QProcess openssl;
        openssl.setWorkingDirectory(dir.path());
        openssl.setProcessChannelMode(QProcess::MergedChannels);
        openssl.start(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromLatin1(script)});
        if (!openssl.waitForFinished(60000) || openssl.exitCode() != 0)
            qWarning("making test certificates failed: %s", openssl.readAll().constData());
        const auto read = [&dir](const char *name) {
            QFile file(dir.filePath(QString::fromLatin1(name)));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        return TestCertificates{QSslCertificate(read("ca.pem")), QSslKey(read("server.key"), QSsl::Ec),
                                QSslCertificate(read("trusted.pem")), QSslCertificate(read("other.pem")),
                                QSslCertificate(read("self.pem"))};
    }();
    return made;
}
