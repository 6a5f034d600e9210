#include "support/http_server.h"

#include <QBuffer>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QSslSocket>
#include <QTimer>
#include <QUrl>

#include <algorithm>

#include <sys/socket.h>

int ScriptedHttpServer::openConnections() const
{
    return int(std::ranges::count(findChildren<QTcpSocket *>(Qt::FindDirectChildrenOnly),
                                  QAbstractSocket::ConnectedState, &QTcpSocket::state));
}

void ScriptedHttpServer::incomingConnection(qintptr descriptor)
{
    QTcpSocket *socket = m_tls.first.isNull() ? new QTcpSocket(this) : new QSslSocket(this);
    socket->setSocketDescriptor(descriptor);
    if (auto *tls = qobject_cast<QSslSocket *>(socket)) {
        tls->setLocalCertificate(m_tls.first);
        tls->setPrivateKey(m_tls.second);
        tls->startServerEncryption();
    }
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    // One request a connection: its head is read up to the blank line, anything after it is ignored.
    connect(socket, &QTcpSocket::readyRead, socket, [this, socket, head = QByteArray()]() mutable {
        head += socket->readAll();
        if (!head.contains("\r\n\r\n"))
            return;
        // The request line's target, in origin or absolute form.
        const QString path = QUrl::fromEncoded(head.split(' ').value(1)).path(QUrl::FullyEncoded);
        disconnect(socket, &QTcpSocket::readyRead, socket, nullptr);
        m_log.append(path);
        answer(socket, m_scripts.value(path, HttpScript::reply("text/html", "<html>Not Found</html>", 404)));
    });
}

void ScriptedHttpServer::answer(QTcpSocket *socket, const HttpScript &script)
{
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
    // The reason phrase is never read.
    QByteArray head = "HTTP/1.1 " + QByteArray::number(script.status) + " Scripted";
    bool lengthGiven = false;
    for (const auto &[name, value] : script.headers) {
        lengthGiven = lengthGiven || name.compare("Content-Length", Qt::CaseInsensitive) == 0;
        head += "\r\n" + name + ": " + value;
    }
    if (!script.contentType.isEmpty())
        head += "\r\nContent-Type: " + script.contentType;
    if (!lengthGiven)
        head += "\r\nContent-Length: " + QByteArray::number(script.body.size());
    socket->write(head + "\r\nConnection: close\r\n\r\n");
    // The body, whole or dripped, goes out from a timer; the connection closes after its last byte.
    const QByteArray body = script.cutAt >= 0 ? script.body.left(script.cutAt) : script.body;
    const qsizetype step = script.drip.first > 0 ? script.drip.first : qMax<qsizetype>(1, body.size());
    auto *pace = new QTimer(socket);
    connect(socket, &QTcpSocket::disconnected, pace, &QTimer::stop);
    connect(pace, &QTimer::timeout, socket, [socket, pace, body, step, sent = qsizetype(0)]() mutable {
        socket->write(body.mid(sent, step));
        sent += step;
        if (sent < body.size())
            return;
        pace->stop();
        socket->disconnectFromHost();
    });
    pace->start(script.drip.second);
}

QByteArray makeJpeg(QSize size, bool noisy)
{
    QImage image(size, QImage::Format_RGB32);
    QRandomGenerator random(quint32(size.width() * 7919 + size.height()));
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, noisy ? random.generate() | 0xff000000u
                                       : qRgb(x * 255 / qMax(1, size.width() - 1),
                                              y * 255 / qMax(1, size.height() - 1), 128));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 90);
    return buffer.data();
}

const TestCertificates &TestCertificates::get()
{
    static const TestCertificates made = [] {
        // Prints the key, then the authority and the certificates it signs, then the self-signed one.
        const char *script = R"sh(set -e; cd "$(mktemp -d)"; trap 'rm -r "$PWD"' EXIT
openssl ecparam -name prime256v1 -genkey -noout -out k; cat k
c() { openssl req -x509 -key k -subj "/CN=$1" -addext "subjectAltName=$2" $3; }
c "Tolmara Test Authority" DNS:authority.invalid | tee ca.pem
c 127.0.0.1 IP:127.0.0.1 "-CA ca.pem -CAkey k"
c other.invalid DNS:other.invalid "-CA ca.pem -CAkey k"
c 127.0.0.1 IP:127.0.0.1)sh";
        QProcess openssl;
        openssl.start(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromLatin1(script)});
        openssl.waitForFinished(60000);
        const QByteArray pem = openssl.readAllStandardOutput();
        const QList<QSslCertificate> made = QSslCertificate::fromData(pem);
        return TestCertificates{made.value(0), QSslKey(pem, QSsl::Ec), made.value(1), made.value(2),
                                made.value(3)};
    }();
    return made;
}
