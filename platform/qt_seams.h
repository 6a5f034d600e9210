#pragma once
// The Qt implementations of the desktop seams.

#include "platform/seams.h"

#include <map>
#include <memory>

class QLockFile;

namespace platform {

class QtMessageBoxes : public MessageBoxes {
public:
    Answer show(const MessageBoxRequest &request) override;
};

// QSettings: on Windows the registry (HKEY_CURRENT_USER\Software\<application>);
// elsewhere an INI file, ~/.config/<application>.ini; one group a section. A
// test can point it at an INI file in another folder on every platform. Each
// store is read once and kept open; every write (or batch of writes) reaches the
// disk before write() returns, the file replaced whole. An INI file changed by
// someone else meanwhile is read again.
class QtSettingsStore : public SettingsStore {
public:
    explicit QtSettingsStore(const QString &folder = QString());
    ~QtSettingsStore() override;
    QString read(const QString &application, const QString &section, const QString &key,
                 const QString &defaultValue) override;
    void write(const QString &application, const QString &section, const QString &key,
               const QString &value) override;
    void beginBatch() override;
    void endBatch() override;
    bool holdStartUp(const QString &application) override;
    void releaseStartUp() override;
    // The INI file of the store (not used for the registry).
    QString fileName(const QString &application) const;

private:
    class OpenFile;
    OpenFile &open(const QString &application);

    static constexpr int StartUpWaitMs = 10000;

    QString m_folder;
    std::map<QString, std::unique_ptr<OpenFile>> m_open;
    int m_batchDepth = 0;
    std::unique_ptr<QLockFile> m_startUp;
};

class QtClipboard : public Clipboard {
public:
    QString text() const override;
    void setText(const QString &text) override;
};

class QtBeeper : public Beeper {
public:
    void beep() override;
};

class QtScreen : public Screen {
public:
    QSize sizeInPixels() const override;
};

// A desktop without a dial-up service: no connection is ever listed.
class NoDialUp : public DialUp {
public:
    qint32 enumConnections(QList<DialUpConnection> &connections) override;
    qint32 hangUp(quintptr handle) override;
};

class QtClock : public Clock {
public:
    QDateTime now() const override;
};

// TLS as the Qt plugin (OpenSSL) provides it, checked against the system's
// trusted roots.
class QtNetwork : public Network {
public:
    bool tlsAvailable() override;
    std::optional<QSslConfiguration> tlsConfiguration() override { return std::nullopt; }
    qint64 maxBody() override { return MaxBodyBytes; }

private:
    int m_tls = -1; // not asked yet
};

// The directory QCoreApplication reports for the executable.
class QtProgramLocation : public ProgramLocation {
public:
    QString dir() const override;
};

} // namespace platform
