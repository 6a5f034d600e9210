#pragma once
// An indicator lamp: a round shape filled with one colour.

#include <QColor>
#include <QWidget>

class Lamp : public QWidget {
    Q_OBJECT
public:
    explicit Lamp(QWidget *parent = nullptr);
    QColor fillColor() const { return m_fill; }
    void setFillColor(const QColor &color);
    // The colour of a lamp that is out: the system's button face.
    static QColor outColor();
    bool isLit() const { return m_fill != outColor(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_fill;
};
