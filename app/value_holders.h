#pragma once
// Small holders for the settings record: one private value, a setter and a getter.
// A holder that was never set gives false, 0 or empty text.

#include <QString>
#include <QVariant>
#include <array>

class clsStoreBool {
public:
    void boolLet(bool value) { m_value = value; }
    bool boolGet() const { return m_value; }

private:
    bool m_value = false;
};

class clsStoreInt {
public:
    void IntLet(qint16 value) { m_value = value; }
    qint16 IntGet() const { return m_value; }

private:
    qint16 m_value = 0;
};

class clsStoreLong {
public:
    void LongLet(qint32 value) { m_value = value; }
    qint32 LongGet() const { return m_value; }

private:
    qint32 m_value = 0;
};

class clsStoreStr {
public:
    void strLet(const QString &value) { m_value = value; }
    QString strGet() const { return m_value; }

private:
    QString m_value;
};

class clsStoreVar {
public:
    void VarLet(const QVariant &value) { m_value = value; }
    QVariant VarGet() const { return m_value; }

private:
    QVariant m_value = QString();
};

// Ten slots, indexes 0 to 9. Any other index raises a "Subscript out of range"
// Fault for the caller's handler to report.
class clsStoreStrArray {
public:
    void strLet(int index, const QString &value) { m_values[slot(index)] = value; }
    QString strGet(int index) const { return m_values[slot(index)]; }

private:
    static std::size_t slot(int index);
    std::array<QString, 10> m_values;
};

class clsStoreBoolArray {
public:
    void boolLet(int index, bool value) { m_values[slot(index)] = value; }
    bool boolGet(int index) const { return m_values[slot(index)]; }

private:
    static std::size_t slot(int index);
    std::array<bool, 10> m_values{};
};
