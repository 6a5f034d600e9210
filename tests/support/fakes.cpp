#include "support/fakes.h"

#include "app/main_window_link.h"
#include "app/mask_edit_texts.h"
#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

namespace fakes {

platform::Answer MessageBoxes::show(const platform::MessageBoxRequest &request)
{
    m_shown.append(request);
    if (m_hook)
        m_hook(request);
    if (!m_script.isEmpty())
        return m_script.takeFirst();
    if (m_answerAllSet)
        return m_answerAll;
    ++m_unscripted;
    QTest::qFail(qPrintable(QStringLiteral("unexpected message box \"%1\": %2").arg(request.title, request.text)),
                 __FILE__, __LINE__);
    switch (request.buttons) {
    case platform::Buttons::Ok: return platform::Answer::Ok;
    case platform::Buttons::YesNo: return platform::Answer::No;
    case platform::Buttons::AbortRetryIgnore: return platform::Answer::Abort;
    default: return platform::Answer::Cancel;
    }
}

QStringList MessageBoxes::texts() const
{
    QStringList all;
    for (const platform::MessageBoxRequest &r : m_shown)
        all.append(r.text);
    return all;
}

platform::DialUpConnection DialUp::connection(quintptr handle, const QByteArray &name)
{
    QByteArray field = name;
    field.resize(257, '\0');
    return {handle, field};
}

QString TestSeams::scratchTemplate()
{
    const QString memory = QStringLiteral("/dev/shm");
    return QDir::cleanPath((QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/tolmara-XXXXXX"));
}

TestSeams::TestSeams()
    : store(std::make_unique<platform::QtSettingsStore>(folder.path()))
{
    QDir(folder.path()).mkdir(QStringLiteral("program"));
    platform::install(&boxes);
    platform::install(store.get());
    platform::install(&clipboard);
    platform::install(&beeper);
    platform::install(&screen);
    platform::install(&dialUp);
    platform::install(&clock);
    resetSettings();
    resetStartup();
    resetMaskEditTexts();
    installMainWindowLink(nullptr);
    overrideProgramDir(QDir::toNativeSeparators(programDir()));
}

TestSeams::~TestSeams()
{
    platform::install(static_cast<platform::MessageBoxes *>(nullptr));
    platform::install(static_cast<platform::SettingsStore *>(nullptr));
    platform::install(static_cast<platform::Clipboard *>(nullptr));
    platform::install(static_cast<platform::Beeper *>(nullptr));
    platform::install(static_cast<platform::Screen *>(nullptr));
    platform::install(static_cast<platform::DialUp *>(nullptr));
    platform::install(static_cast<platform::Clock *>(nullptr));
    overrideProgramDir(QString());
}

QString TestSeams::programDir() const { return folder.filePath(QStringLiteral("program")); }

QString TestSeams::settingsFile() const { return store->fileName(store::Application); }

QString TestSeams::stored(const QString &key) const
{
    return store->read(store::Application, store::Section, key, QStringLiteral("<missing>"));
}

} // namespace fakes
