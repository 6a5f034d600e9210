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

// Puts the fakes in (with fresh program state) or the real seams back.
void TestSeams::install(bool on)
{
    if (on)
        QDir(folder.path()).mkdir(QStringLiteral("program"));
    const auto put = [on](auto *fake) { platform::install(on ? fake : nullptr); };
    put(&boxes), put(store.get()), put(&clipboard), put(&beeper), put(&screen), put(&dialUp), put(&clock);
    overrideProgramDir(on ? QDir::toNativeSeparators(programDir()) : QString());
    if (!on)
        return;
    resetSettings();
    resetStartup();
    resetMaskEditTexts();
    installMainWindowLink(nullptr);
}

QString TestSeams::programDir() const { return folder.filePath(QStringLiteral("program")); }

QString TestSeams::settingsFile() const { return store->fileName(store::Application); }

QString TestSeams::stored(const QString &key) const
{
    return store->read(store::Application, store::Section, key, QStringLiteral("<missing>"));
}

} // namespace fakes
