#pragma once

#include <QColor>
#include <QImage>
#include <QQuickPaintedItem>

namespace velmora {

/// Lets QML know the type of pictures.
struct QmlImage {
    Q_GADGET
    QML_FOREIGN(QImage)
    QML_ANONYMOUS
};

/// One of the program's symbols in one colour.
class Symbol : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)

  public:
    explicit Symbol(QQuickItem* parent = nullptr);

    [[nodiscard]] QString name() const { return name_; }
    void setName(const QString& name);
    [[nodiscard]] QColor color() const { return color_; }
    void setColor(const QColor& color);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void nameChanged();
    void colorChanged();

  private:
    QString name_;
    QColor color_ = Qt::black;
};

/// A picture with round corners that fills the item, cut where the ratios differ. Items cannot be clipped
/// round without shaders, so the corners are cut on the processor, once per picture and size.
class RoundedPicture : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged FINAL)
    Q_PROPERTY(bool hasImage READ hasImage NOTIFY imageChanged FINAL)
    Q_PROPERTY(double radius READ radius WRITE setRadius NOTIFY shapeChanged FINAL)
    Q_PROPERTY(bool roundsBottom READ roundsBottom WRITE setRoundsBottom NOTIFY shapeChanged FINAL)
    Q_PROPERTY(QColor edge READ edge WRITE setEdge NOTIFY shapeChanged FINAL)
    /// Width by height; 0 without a picture.
    Q_PROPERTY(double ratio READ ratio NOTIFY imageChanged FINAL)

  public:
    explicit RoundedPicture(QQuickItem* parent = nullptr);

    [[nodiscard]] QImage image() const { return image_; }
    void setImage(const QImage& image);
    [[nodiscard]] bool hasImage() const { return !image_.isNull(); }
    [[nodiscard]] double ratio() const;
    [[nodiscard]] double radius() const { return radius_; }
    void setRadius(double radius);
    [[nodiscard]] bool roundsBottom() const { return roundsBottom_; }
    void setRoundsBottom(bool on);
    [[nodiscard]] QColor edge() const { return edge_; }
    void setEdge(const QColor& edge);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void imageChanged();
    void shapeChanged();

  private:
    QImage image_;
    double radius_ = 10;
    bool roundsBottom_ = true;
    QColor edge_ = Qt::transparent;
};

/// The blurred picture behind a window. It is blurred on another thread; until that is done the item is not
/// `ready` and draws nothing.
class BlurredPicture : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged FINAL)
    Q_PROPERTY(bool ready READ ready NOTIFY readyChanged FINAL)

  public:
    explicit BlurredPicture(QQuickItem* parent = nullptr);

    [[nodiscard]] QImage image() const { return image_; }
    void setImage(const QImage& image);
    [[nodiscard]] bool ready() const { return !blurred_.isNull(); }
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void imageChanged();
    void readyChanged();

  private:
    void showBlurred(const QImage& blurred);

    QImage image_;
    QImage blurred_;
    int generation_ = 0;  ///< of the latest image: older ones that are still being blurred do not count
};

/// The soft shadow around a box with round corners. The item lies `spread` beyond the box on every side and
/// leaves the box itself free.
class Shadow : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double spread READ spread WRITE setSpread NOTIFY shapeChanged FINAL)
    Q_PROPERTY(double drop READ drop WRITE setDrop NOTIFY shapeChanged FINAL)
    Q_PROPERTY(double radius READ radius WRITE setRadius NOTIFY shapeChanged FINAL)

  public:
    explicit Shadow(QQuickItem* parent = nullptr);

    [[nodiscard]] double spread() const { return spread_; }
    void setSpread(double spread);
    /// How far the shadow lies below the box.
    [[nodiscard]] double drop() const { return drop_; }
    void setDrop(double drop);
    [[nodiscard]] double radius() const { return radius_; }
    void setRadius(double radius);
    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void shapeChanged();

  private:
    double spread_ = 28;
    double drop_ = 10;
    double radius_ = 10;
};

}  // namespace velmora
