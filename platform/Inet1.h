#pragma once
// The transfer control: an HTTP client that behaves like a classic Internet
// transfer control. Execute returns at once; progress arrives later, from the
// event loop, as StateChanged(state) with the control's state numbers.
//
// - Every HTTP reply, whatever its status (404 and 500 too), ends in
//   icResponseCompleted; its headers and body are read like any other. A reply
//   whose connection closed in the middle of the body also completes: the body is
//   what arrived, and the caller finds out that it is short.
// - icError is for failures of the transport only: unknown host, refused or
//   unreachable connection, a connection closed or reset before any reply, the
//   transfer time-out, a body over the cap (MaxBodyBytes). ResponseInfo then reads "Name
//   not resolved", "Cannot connect", "Reply too large ...", or the network
//   layer's own description.
// - Nothing is ever emitted from inside Execute or Cancel. After Cancel, or a new
//   Execute, no report of the earlier request arrives, not even one already queued.
// - StillExecuting stays true until the final report (11 or 12) is delivered.
// - RequestTimeout, read by Execute, limits the silence between two pieces of
//   news from the server, not the length of the transfer. Changed while a request
//   runs (as a cancel does), the new value bounds the whole rest of that request,
//   however steadily the server trickles.
// - A connection closed before any reply is tried once more by the network layer
//   before it fails, so the server sees that request twice.
// - Redirects are followed, a few hops at most, http to https included but never
//   https down to http; the reply at the end of the chain is the response.
// - https:// addresses go over TLS, their certificates checked against the
//   system's trusted roots. A certificate that fails the check, a redirect down to
//   http, or a system without TLS support ends the request in icError, with
//   RefusedAddress naming the address refused and ResponseInfo the reason
//   ("certificate not trusted (self-signed)").

#include <QByteArray>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSslCertificate>
#include <QSslError>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

class Inet : public QObject {
    Q_OBJECT
public:
    enum State {
        icNone = 0,
        icResolvingHost = 1,
        icHostResolved = 2,
        icConnecting = 3,
        icConnected = 4,
        icRequesting = 5,
        icRequestSent = 6,
        icReceivingResponse = 7,
        icResponseReceived = 8,
        icDisconnecting = 9,
        icDisconnected = 10,
        icError = 11,
        icResponseCompleted = 12,
    };

    explicit Inet(QObject *parent = nullptr);
    ~Inet() override;

    // Starts an asynchronous request (operation "GET"); returns at once. An
    // operation still in progress is cancelled first, silently.
    void Execute(const QString &url, const QString &operation);
    // The value of a header of the last reply; empty when absent.
    QString GetHeader(const QString &name) const;
    // The next at most size bytes of the body (dataType 1: byte array); empty when exhausted.
    QByteArray GetChunk(int size, int dataType = 1);
    // The same as a view into the body, valid until the body is taken or the
    // request ends; nothing is copied.
    QByteArrayView NextChunk(int size);
    // Hands over the body, as far as it was read with the two above; the
    // control keeps nothing of it.
    QByteArray TakeBody();
    bool StillExecuting() const { return m_executing; }
    // Aborts the operation in progress and forgets its reply; harmless when none is.
    // Emits nothing.
    void Cancel();
    QString ResponseInfo() const { return m_responseInfo; }

    // Why the last request ended refused rather than failed, and at which address.
    enum class Refusal { None, Certificate, InsecureRedirect, NoTls };
    Refusal Refused() const { return m_refused; }
    QString RefusedAddress() const { return m_refusedAddress; }

    // Whether the system can make TLS connections at all. Start-up asks once, and
    // says so in one line on the error output when it cannot.
    static bool TlsAvailable();
    static void CheckTlsAtStartup();

    // Read by Execute.
    int RemotePort = 80;     // used when the address names no port
    int AccessType = 1;      // 1: direct connection, no proxy; otherwise the application's proxy
    int Protocol = 4;        // 4: HTTP
    // Seconds without any data before the transfer fails; 0: none. The moment of
    // the last change is kept: a change during a request bounds its rest from then.
    class Seconds {
    public:
        Seconds(int value) : m_value(value) { m_changed.start(); }
        Seconds &operator=(int value)
        {
            m_value = value;
            m_changed.start();
            return *this;
        }
        operator int() const { return m_value; }
        qint64 msSinceChange() const { return m_changed.elapsed(); }

    private:
        int m_value;
        QElapsedTimer m_changed;
    };
    Seconds RequestTimeout = 60;

signals:
    void StateChanged(int state);

private:
    void watch(QNetworkReply *reply);
    void post(int state);
    void deliver(quint64 generation, int state);
    void replyFinished(QNetworkReply *reply);
    void checkTimeOut();
    void refuseLargeBody(qint64 size);
    void drain(QNetworkReply *reply);
    void releaseBody();
    void refuse(Refusal refusal, const QString &address, const QString &reason);
    void dropReply();

    QNetworkAccessManager *m_manager;
    QPointer<QNetworkReply> m_reply;
    // Every Execute and Cancel starts a new generation; queued reports of an older
    // one are dropped on delivery.
    quint64 m_generation = 0;
    bool m_executing = false;
    bool m_requestSent = false;
    bool m_dataReportQueued = false; // one "data arrived" report waits at most
    bool m_tooLarge = false;         // the body went over the network seam's maxBody
    int m_proxyAccess = -1;          // AccessType the manager's proxy was set for
    int m_timeOutSet = 0;            // RequestTimeout given to the network layer by Execute
    QDeadlineTimer m_rest;           // end of a request whose RequestTimeout changed meanwhile
    QTimer *m_watchdog;              // applies a RequestTimeout changed during a request
    QTimer *m_restEnd;               // ends such a request on the dot
    // The body as it arrives: the network layer's buffer is emptied into it, so
    // the body is held once.
    QByteArray m_body;
    qsizetype m_bodyRead = 0; // how much of it the chunks gave out
    QString m_responseInfo;
    Refusal m_refused = Refusal::None;
    QString m_refusedAddress;
    QString m_hop;                // the address asked for last: the request's own, or a redirect's
    QList<QSslError> m_sslErrors; // certificate faults of the request in progress
};
