#pragma once
// The transfer control: an HTTP client that behaves like a classic Internet
// transfer control. Execute returns at once; progress arrives later, from the
// event loop, as StateChanged(state) with the control's state numbers.

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

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

    // Starts an asynchronous request (operation "GET"); returns at once.
    void Execute(const QString &url, const QString &operation);
    // The value of a header of the last reply; empty when absent.
    QString GetHeader(const QString &name) const;
    // The next at most size bytes of the body (dataType 1: byte array); empty when exhausted.
    QByteArray GetChunk(int size, int dataType = 1);
    bool StillExecuting() const { return m_executing; }
    // Aborts the operation in progress; harmless when none is. Emits nothing.
    void Cancel();
    QString ResponseInfo() const { return m_responseInfo; }

    int RemotePort = 80;
    int AccessType = 1;      // 1: direct connection, no proxy
    int Protocol = 4;        // 4: HTTP
    int RequestTimeout = 60; // seconds; 0 means none

signals:
    void StateChanged(int state);

private:
    void report(int state);
    void finished();
    void dropReply();

    QNetworkAccessManager *m_manager;
    QPointer<QNetworkReply> m_reply;
    bool m_executing = false;
    QString m_responseInfo;
};
