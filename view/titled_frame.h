#pragma once
// A frame with a title that changes on every call (the picture's name, then
// "(saved)"). A new title repaints the title's band alone; a group box would
// repaint everything inside it, the picture included, twice a call.

#include <QGroupBox>

class QStyleOptionGroupBox;

class TitledFrame : public QGroupBox {
public:
    explicit TitledFrame(const QString &title, QWidget *parent = nullptr);

    // The title shown. (These hide the group box's own: the group box keeps
    // its first title, so that its frame and contents stay where they are.)
    QString title() const { return m_title; }
    void setTitle(const QString &title);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QStyleOptionGroupBox styleOption() const;
    QRect titleBand() const;

    QString m_title;
};
