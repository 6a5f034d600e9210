#pragma once
// The Qt implementations of the desktop seams.

#include "platform/seams.h"

namespace platform {

class QtMessageBoxes : public MessageBoxes {
public:
    Answer show(const MessageBoxRequest &request) override;
};

// QSettings in INI format: on Linux ~/.config/<application>.ini, one group a section.
// A test can point it at another folder.
class QtSettingsStore : public SettingsStore {
public:
    explicit QtSettingsStore(const QString &folder = QString());
    QString read(const QString &application, const QString &section, const QString &key,
                 const QString &defaultValue) override;
    void write(const QString &application, const QString &section, const QString &key,
               const QString &value) override;
    QString fileName(const QString &application) const;

private:
    QString m_folder;
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

} // namespace platform
