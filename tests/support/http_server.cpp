#include "support/http_server.h"

#include <QBuffer>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <sys/socket.h>

// Bytes handed to the socket at a time when the body is not dripped; the next piece follows
// once the socket has written most of the last one, so a large body is never copied whole.
constexpr qint64 pieceSize = 256 * 1024;

// What one connection is doing; a child of its socket, so it dies with it.
class HttpExchange : public QObject {
public:
    using QObject::QObject;
    QByteArray head; // the request head as far as it has arrived
    HttpScript script;
    qint64 sent = -1; // bytes of body written so far; -1 while the request is being read
    qint64 limit = 0; // bytes of body to send in all
};

ScriptedHttpServer::ScriptedHttpServer(QObject *parent) : QTcpServer(parent)
{
    listen(QHostAddress::LocalHost, 0);
}

ScriptedHttpServer::~ScriptedHttpServer() { qDeleteAll(findChildren<QTcpSocket *>(Qt::FindDirectChildrenOnly)); }

QString ScriptedHttpServer::url(const QString &path) const
{
    return QStringLiteral("%1://127.0.0.1:%2%3").arg(QLatin1String(m_certificate.isNull() ? "http" : "https")).arg(port()).arg(path);
}

void ScriptedHttpServer::useTls(const QSslCertificate &certificate, const QSslKey &key)
{
    m_certificate = certificate;
    m_key = key;
}

int ScriptedHttpServer::openConnections() const
{
    int open = 0;
    for (const QTcpSocket *socket : findChildren<QTcpSocket *>(Qt::FindDirectChildrenOnly))
        open += socket->state() == QAbstractSocket::ConnectedState ? 1 : 0;
    return open;
}

void ScriptedHttpServer::incomingConnection(qintptr descriptor)
{
    QTcpSocket *socket = m_certificate.isNull() ? new QTcpSocket(this) : new QSslSocket(this);
    socket->setSocketDescriptor(descriptor);
    if (auto *tls = qobject_cast<QSslSocket *>(socket)) {
        tls->setLocalCertificate(m_certificate);
        tls->setPrivateKey(m_key);
        tls->startServerEncryption();
    }
    auto *ex = new HttpExchange(socket);
    connect(socket, &QTcpSocket::readyRead, ex, [this, socket, ex] { readRequest(socket, ex); });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
}

void ScriptedHttpServer::readRequest(QTcpSocket *socket, HttpExchange *ex)
{
    ex->head += socket->readAll(); // one request a connection; anything after it is ignored
    if (ex->sent >= 0 || !ex->head.contains("\r\n\r\n"))
        return;
    ex->sent = 0;
    // The request line's target, in origin or absolute form.
    const QString path = QUrl::fromEncoded(ex->head.split(' ').value(1)).path(QUrl::FullyEncoded);
    m_log.append(path);
    ex->script = m_scripts.value(path, HttpScript::reply("text/html", "<html><body>404 Not Found</body></html>", 404));
    answer(socket, ex);
}

void ScriptedHttpServer::answer(QTcpSocket *socket, HttpExchange *ex)
{
    const HttpScript &script = ex->script;
    if (script.ending == HttpScript::Ending::CloseWithoutReply)
        socket->disconnectFromHost();
    if (script.ending == HttpScript::Ending::ResetWithoutReply) {
        // Closing with a zero linger time makes the system send a reset, not a FIN.
        const linger now{1, 0};
        ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
        socket->abort();
    }
    if (script.ending != HttpScript::Ending::Reply)
        return;
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
    socket->write(head + "Connection: close\r\n\r\n");
    ex->limit = script.cutAt >= 0 ? qMin(script.cutAt, qint64(script.body.size())) : script.body.size();
    if (script.dripBytes > 0) {
        auto *drip = new QTimer(ex);
        connect(drip, &QTimer::timeout, ex, [this, socket, ex] { send(socket, ex); });
        drip->start(script.dripIntervalMs);
        return;
    }
    connect(socket, &QTcpSocket::bytesWritten, ex, [this, socket, ex] { send(socket, ex); });
    send(socket, ex);
}

// Writes the next piece of the body (more while not dripping), and closes after the last.
void ScriptedHttpServer::send(QTcpSocket *socket, HttpExchange *ex)
{
    const bool drip = ex->script.dripBytes > 0;
    if (socket->state() != QAbstractSocket::ConnectedState)
        return;
    do {
        const qint64 n = qMin(drip ? qint64(ex->script.dripBytes) : pieceSize, ex->limit - ex->sent);
        socket->write(ex->script.body.constData() + ex->sent, n);
        ex->sent += n;
    } while (!drip && ex->sent < ex->limit && socket->bytesToWrite() < pieceSize);
    if (ex->sent >= ex->limit)
        socket->disconnectFromHost();
}

QByteArray makeJpeg(QSize size, bool noisy)
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
    image.save(&buffer, "JPEG", 90);
    return bytes;
}

const TestCertificates &TestCertificates::get()
{
    static const TestCertificates made = [] {
        // Prints the key, then the authority and the certificates it signs, then the self-signed one.
        const char *script = R"(set -e; openssl ecparam -name prime256v1 -genkey -noout -out k; cat k
c() { openssl req -x509 -key k -subj "/CN=$1" -addext "subjectAltName=$2" $3; }
c "Tolmara Test Authority" DNS:authority.invalid | tee ca.pem
c 127.0.0.1 IP:127.0.0.1 "-CA ca.pem -CAkey k"
c other.invalid DNS:other.invalid "-CA ca.pem -CAkey k"
c 127.0.0.1 IP:127.0.0.1)";
        QTemporaryDir dir;
        QProcess openssl;
        openssl.setWorkingDirectory(dir.path());
        openssl.start(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromLatin1(script)});
        openssl.waitForFinished(60000);
        const QByteArray pem = openssl.readAllStandardOutput();
        const QList<QSslCertificate> made = QSslCertificate::fromData(pem);
        if (made.size() != 4)
            qWarning("making test certificates failed: %s", openssl.readAllStandardError().constData());
        return TestCertificates{made.value(0), QSslKey(pem, QSsl::Ec), made.value(1), made.value(2), made.value(3)};
    }();
    return made;
}
