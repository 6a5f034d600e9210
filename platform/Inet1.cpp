#include "platform/Inet1.h"

#include "platform/seams.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QTimer>
#include <QUrl>

#include <climits>
#include <utility>
#include <cstdio>

namespace {

// The texts the run logic looks for when a connection could not be made.
const QString nameNotResolved = QStringLiteral("Name not resolved");
const QString cannotConnect = QStringLiteral("Cannot connect");
// The network layer calls its own time-out "Operation canceled"; say what happened.
const QString timedOut = QStringLiteral("Request timed out");
const QString noTls = QStringLiteral("no TLS support on this system (the OpenSSL library is missing)");

// Bodies up to this size get their buffer in one piece when their length is announced.
constexpr qint64 MaxReservedBody = 256 * 1024 * 1024;

constexpr qint64 ReadAhead = 256 * 1024;

// Redirects followed at most; at the end of a longer chain the last redirect is the reply.
constexpr int MaxRedirects = 5;

bool isSecure(const QUrl &address)
{
    return address.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0;
}

QString certificateFault(const QSslError &error)
{
    switch (error.error()) {
    case QSslError::SelfSignedCertificate:
    case QSslError::SelfSignedCertificateInChain:
        return QStringLiteral("certificate not trusted (self-signed)");
    case QSslError::UnableToGetIssuerCertificate:
    case QSslError::UnableToGetLocalIssuerCertificate:
    case QSslError::UnableToVerifyFirstCertificate:
    case QSslError::CertificateUntrusted:
    case QSslError::InvalidCaCertificate:
        return QStringLiteral("certificate not trusted (unknown authority)");
    case QSslError::CertificateExpired:
        return QStringLiteral("certificate expired");
    case QSslError::CertificateNotYetValid:
        return QStringLiteral("certificate not yet valid");
    case QSslError::HostNameMismatch:
        return QStringLiteral("certificate is for another host");
    case QSslError::CertificateRevoked:
        return QStringLiteral("certificate revoked");
    default:
        return QStringLiteral("certificate refused (") + error.errorString() + QLatin1Char(')');
    }
}

// Every fault of a certificate once, in the order found.
QString certificateFaults(const QList<QSslError> &errors)
{
    QStringList faults;
    for (const QSslError &error : errors) {
        const QString fault = certificateFault(error);
        if (!faults.contains(fault))
            faults.append(fault);
    }
    return faults.join(QLatin1String(", "));
}

bool isTimeOutOrAbort(QNetworkReply::NetworkError error)
{
    return error == QNetworkReply::TimeoutError || error == QNetworkReply::OperationCanceledError;
}

// Failures of the network layer itself (not of a proxy, the content or the protocol),
// apart from a connection that the other side closed.
bool isNetworkFailure(QNetworkReply::NetworkError error)
{
    return error > QNetworkReply::NoError && error <= QNetworkReply::UnknownNetworkError
        && error != QNetworkReply::RemoteHostClosedError;
}

} // namespace

Inet::Inet(QObject *parent)
    : QObject(parent), m_manager(new QNetworkAccessManager(this)), m_watchdog(new QTimer(this)),
      m_restEnd(new QTimer(this))
{
    m_manager->setAutoDeleteReplies(false);
    m_watchdog->setInterval(250);
    connect(m_watchdog, &QTimer::timeout, this, &Inet::checkTimeOut);
    m_restEnd->setSingleShot(true);
    m_restEnd->setTimerType(Qt::PreciseTimer);
    connect(m_restEnd, &QTimer::timeout, this, &Inet::checkTimeOut);
}

Inet::~Inet()
{
    ++m_generation;
    dropReply();
}

void Inet::Execute(const QString &url, const QString &operation)
{
    Cancel();
    m_responseInfo.clear();
    m_refused = Refusal::None;
    m_refusedAddress.clear();
    m_sslErrors.clear();
    m_hop = url.trimmed();
    m_executing = true;

    QUrl address(url.trimmed(), QUrl::TolerantMode);
    const bool secure = isSecure(address);
    if (secure && !TlsAvailable()) {
        post(icResolvingHost);
        refuse(Refusal::NoTls, url.trimmed(), noTls);
        return;
    }
    if (address.port() == -1 && !secure)
        address.setPort(RemotePort); // an https:// address without a port goes to 443
    if (m_proxyAccess != AccessType) {
        m_manager->setProxy(AccessType == 1 ? QNetworkProxy(QNetworkProxy::NoProxy)
                                            : QNetworkProxy(QNetworkProxy::DefaultProxy));
        m_proxyAccess = AccessType;
    }

    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(MaxRedirects);
    if (const std::optional<QSslConfiguration> tls = platform::network().tlsConfiguration())
        request.setSslConfiguration(*tls);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    m_timeOutSet = qBound(0, int(RequestTimeout), INT_MAX / 1000);
    request.setTransferTimeout(m_timeOutSet * 1000);
    m_rest = QDeadlineTimer(QDeadlineTimer::Forever);

    const QByteArray verb = operation.trimmed().isEmpty() ? QByteArray("GET") : operation.trimmed().toUpper().toLatin1();
    m_reply = verb == "GET" ? m_manager->get(request) : m_manager->sendCustomRequest(request, verb);
    // The network layer reads ahead of us by this much at most, so a body is
    // held once, in m_body, and not a second time on its way there.
    m_reply->setReadBufferSize(ReadAhead);
    watch(m_reply);
    m_watchdog->start();
    // The first report, like every other, comes from the event loop.
    post(icResolvingHost);
}

void Inet::watch(QNetworkReply *reply)
{
    // The reply's signals only queue reports; nothing here calls out to the caller.
    connect(reply, &QNetworkReply::socketStartedConnecting, this, [this] { post(icConnecting); });
    connect(reply, &QNetworkReply::requestSent, this, [this] {
        m_requestSent = true;
        post(icRequestSent);
    });
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] {
        post(icReceivingResponse);
        const qint64 announced = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        refuseLargeBody(announced);
        if (announced > 0 && announced <= MaxReservedBody)
            m_body.reserve(announced);
    });
    // One report for each block of data that arrives, so that a slow body keeps the
    // caller's inactivity time-out alive; blocks that arrive while a report still
    // waits share it.
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] {
        refuseLargeBody(m_body.size() + reply->bytesAvailable());
        drain(reply);
        if (!m_dataReportQueued && !m_tooLarge) {
            m_dataReportQueued = true;
            post(icResponseReceived);
        }
    });
    connect(reply, &QNetworkReply::redirected, this, [this](const QUrl &next) {
        releaseBody(); // what came with the redirect is not the response
        m_hop = next.toString();
        m_requestSent = false; // the next hop has its own connection to make
    });
    // Not ignored, so the handshake fails; kept to say why.
    connect(reply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError> &errors) { m_sslErrors = errors; });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { replyFinished(reply); });
}

// The body (as announced, or as held so far) may not grow beyond the largest
// the system allows.
void Inet::refuseLargeBody(qint64 size)
{
    if (size <= platform::network().maxBody() || m_tooLarge || !m_reply)
        return;
    m_tooLarge = true;
    m_reply->abort(); // finishes the reply: see replyFinished
    releaseBody();
}

void Inet::releaseBody()
{
    m_body = QByteArray();
    m_bodyRead = 0;
}

// Moves what the network layer holds of the body into m_body.
void Inet::drain(QNetworkReply *reply)
{
    if (m_tooLarge || reply != m_reply || !reply->isOpen())
        return;
    const qint64 available = reply->bytesAvailable();
    if (available <= 0)
        return;
    const qsizetype held = m_body.size();
    m_body.resize(held + available);
    const qint64 got = reply->read(m_body.data() + held, available);
    m_body.resize(held + qMax<qint64>(got, 0));
}

void Inet::post(int state)
{
    QMetaObject::invokeMethod(
        this, [this, generation = m_generation, state] { deliver(generation, state); }, Qt::QueuedConnection);
}

void Inet::deliver(quint64 generation, int state)
{
    if (generation != m_generation)
        return; // cancelled, or superseded by a newer request
    if (state == icResponseReceived)
        m_dataReportQueued = false;
    if (state == icError || state == icResponseCompleted) {
        m_executing = false;
        m_watchdog->stop();
        m_restEnd->stop();
    }
    emit StateChanged(state);
}

void Inet::replyFinished(QNetworkReply *reply)
{
    if (reply != m_reply)
        return;
    if (m_tooLarge) {
        m_responseInfo = QStringLiteral("Reply too large (over %1 MiB)").arg(platform::network().maxBody() >> 20);
        post(icError);
        return;
    }
    const QNetworkReply::NetworkError error = reply->error();
    if (!m_sslErrors.isEmpty()) {
        refuse(Refusal::Certificate, m_hop, certificateFaults(m_sslErrors));
        return;
    }
    if (error == QNetworkReply::InsecureRedirectError) {
        refuse(Refusal::InsecureRedirect, m_hop,
               QStringLiteral("redirect to ") + reply->url().toString() + QStringLiteral(" refused (not secure)"));
        return;
    }
    // A reply that got as far as its status line is a response, whatever the status,
    // and even when the connection broke off in the body; a time-out is not.
    const bool answered = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    if (error == QNetworkReply::NoError || (answered && !isTimeOutOrAbort(error))) {
        drain(reply);
        post(icResponseCompleted);
        return;
    }
    if (error == QNetworkReply::HostNotFoundError)
        m_responseInfo = nameNotResolved;
    else if (error == QNetworkReply::ConnectionRefusedError || (!m_requestSent && isNetworkFailure(error)))
        m_responseInfo = cannotConnect; // the request never went out: no connection was made
    else if (isTimeOutOrAbort(error))
        m_responseInfo = timedOut; // Cancel never gets here, so an abort is the transfer time-out
    else
        m_responseInfo = reply->errorString();
    post(icError);
}

void Inet::refuse(Refusal refusal, const QString &address, const QString &reason)
{
    m_refused = refusal;
    m_refusedAddress = address;
    m_responseInfo = reason;
    post(icError);
}

bool Inet::TlsAvailable() { return platform::network().tlsAvailable(); }

void Inet::CheckTlsAtStartup()
{
    if (!TlsAvailable())
        std::fprintf(stderr, "tolmara: %s: https:// addresses cannot be fetched\n", qPrintable(noTls));
}

void Inet::checkTimeOut()
{
    if (!m_reply || m_reply->isFinished())
        return;
    // The network layer's own time-out covers the value Execute gave it. A value
    // set since (a cancel sets one) limits the whole rest of the request, so that a
    // server that keeps trickling cannot hold it open.
    const int seconds = qBound(0, int(RequestTimeout), INT_MAX / 1000);
    if (seconds != m_timeOutSet) {
        m_timeOutSet = seconds;
        m_restEnd->stop();
        m_rest = QDeadlineTimer(QDeadlineTimer::Forever);
        if (seconds != 0) {
            m_rest = QDeadlineTimer(qint64(seconds) * 1000 - RequestTimeout.msSinceChange());
            m_restEnd->start(int(qMax<qint64>(0, m_rest.remainingTime())));
        }
    }
    if (m_rest.hasExpired())
        m_reply->abort(); // finishes the reply as timed out: see replyFinished
}

QString Inet::GetHeader(const QString &name) const
{
    if (!m_reply)
        return QString();
    return QString::fromLatin1(m_reply->rawHeader(name.toLatin1()));
}

QByteArray Inet::GetChunk(int size, int) { return NextChunk(size).toByteArray(); }

QByteArrayView Inet::NextChunk(int size)
{
    if (!m_reply || size <= 0 || !m_reply->isOpen())
        return QByteArrayView();
    const qsizetype length = qMin<qsizetype>(size, m_body.size() - m_bodyRead);
    const QByteArrayView chunk(m_body.constData() + m_bodyRead, length);
    m_bodyRead += length;
    return chunk;
}

QByteArray Inet::TakeBody()
{
    QByteArray body = std::exchange(m_body, QByteArray());
    body.truncate(std::exchange(m_bodyRead, 0));
    return body;
}

void Inet::Cancel()
{
    ++m_generation;
    m_executing = false;
    m_requestSent = false;
    m_dataReportQueued = false;
    m_tooLarge = false;
    m_watchdog->stop();
    m_restEnd->stop();
    dropReply();
    releaseBody();
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
