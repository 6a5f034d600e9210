#include "platform/Inet1.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

Inet::Inet(QObject *parent) : QObject(parent), m_manager(new QNetworkAccessManager(this))
{
    m_manager->setAutoDeleteReplies(false);
}

Inet::~Inet() { dropReply(); }

void Inet::Execute(const QString &url, const QString &operation)
{
    Cancel();
    m_responseInfo.clear();
    QUrl address(url, QUrl::TolerantMode);
    if (address.port() == -1)
        address.setPort(RemotePort);
    m_manager->setProxy(AccessType == 1 ? QNetworkProxy(QNetworkProxy::NoProxy) : QNetworkProxy());
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(RequestTimeout > 0 ? RequestTimeout * 1000 : 0);
    m_reply = m_manager->sendCustomRequest(request, operation.toLatin1());
    m_executing = true;
    QNetworkReply *reply = m_reply;
    // Nothing is reported from inside Execute: the first state comes from the event loop.
    QTimer::singleShot(0, reply, [this, reply] {
        if (reply == m_reply)
            report(icResolvingHost);
    });
    connect(reply, &QNetworkReply::socketStartedConnecting, this, [this] { report(icConnecting); });
    connect(reply, &QNetworkReply::requestSent, this, [this] { report(icRequestSent); });
    connect(reply, &QNetworkReply::metaDataChanged, this, [this] { report(icResponseReceived); });
    connect(reply, &QNetworkReply::downloadProgress, this, [this] { report(icReceivingResponse); });
    connect(reply, &QNetworkReply::finished, this, &Inet::finished);
}

void Inet::report(int state)
{
    if (m_executing)
        emit StateChanged(state);
}

void Inet::finished()
{
    QNetworkReply *reply = m_reply;
    if (!reply || !m_executing)
        return;
    m_executing = false;
    // Any HTTP reply, whatever its status, is a completed response; only
    // transport failures are errors.
    const bool answered = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    if (answered) {
        emit StateChanged(icResponseCompleted);
        return;
    }
    switch (reply->error()) {
    case QNetworkReply::HostNotFoundError:
        m_responseInfo = QStringLiteral("Name not resolved");
        break;
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::UnknownNetworkError:
        m_responseInfo = QStringLiteral("Cannot connect");
        break;
    default:
        m_responseInfo = reply->errorString();
        break;
    }
    emit StateChanged(icError);
}

QString Inet::GetHeader(const QString &name) const
{
    if (!m_reply)
        return QString();
    return QString::fromLatin1(m_reply->rawHeader(name.toLatin1()));
}

QByteArray Inet::GetChunk(int size, int)
{
    if (!m_reply || size <= 0)
        return QByteArray();
    return m_reply->read(size);
}

void Inet::Cancel()
{
    m_executing = false;
    dropReply();
}

void Inet::dropReply()
{
    if (!m_reply)
        return;
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}
