#include "ui/run/image_list.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPixmap>

namespace pairwell {

namespace {

// A folder outline in a 16-unit square, scaled to the pixmap.
void DrawFolder(QPainter& p, const QColor& fill) {
  QPainterPath tab;
  tab.moveTo(1.5, 3.5);
  tab.lineTo(6.0, 3.5);
  tab.lineTo(7.5, 5.0);
  tab.lineTo(14.5, 5.0);
  tab.lineTo(14.5, 13.5);
  tab.lineTo(1.5, 13.5);
  tab.closeSubpath();
  p.setPen(QPen(fill.darker(170), 1.0));
  p.setBrush(fill);
  p.drawPath(tab);
  p.setPen(QPen(fill.lighter(130), 1.0));
  p.drawLine(QPointF(2.5, 6.5), QPointF(13.5, 6.5));
}

QPixmap Draw(int image, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter p(&pixmap);
  p.setRenderHint(QPainter::Antialiasing);
  p.scale(size / 16.0, size / 16.0);
  switch (image) {
    case ImageList::kSource: {
      DrawFolder(p, QColor(240, 200, 80));
      // An arrow leaving the folder: its copy goes to the others.
      p.setPen(QPen(QColor(30, 130, 40), 2.0, Qt::SolidLine, Qt::RoundCap,
                    Qt::RoundJoin));
      p.drawLine(QPointF(5.0, 9.5), QPointF(12.0, 9.5));
      p.drawLine(QPointF(9.5, 7.0), QPointF(12.0, 9.5));
      p.drawLine(QPointF(9.5, 12.0), QPointF(12.0, 9.5));
      break;
    }
    case ImageList::kDeleted: {
      DrawFolder(p, QColor(190, 190, 190));
      p.setPen(QPen(QColor(200, 30, 30), 2.0, Qt::SolidLine, Qt::RoundCap));
      p.drawLine(QPointF(5.0, 7.0), QPointF(11.0, 13.0));
      p.drawLine(QPointF(11.0, 7.0), QPointF(5.0, 13.0));
      break;
    }
    default:
      DrawFolder(p, QColor(240, 200, 80));
      break;
  }
  return pixmap;
}

}  // namespace

ImageList::ImageList(QObject* parent) : QObject(parent) {
  setObjectName(QStringLiteral("ImageList"));
  static const char* const kThemeNames[kCount] = {"folder", "folder-open",
                                                  "user-trash"};
  for (int i = 1; i <= kCount; ++i) {
    images_[static_cast<std::size_t>(i - 1)] = QIcon::fromTheme(
        QString::fromLatin1(kThemeNames[i - 1]), DrawnImage(i));
  }
}

ImageList::~ImageList() = default;

QIcon ImageList::Image(int i) const {
  if (i < 1 || i > kCount) return QIcon();
  return images_[static_cast<std::size_t>(i - 1)];
}

QIcon ImageList::DrawnImage(int i) {
  QIcon icon;
  for (const int size : {16, 32}) icon.addPixmap(Draw(i, size));
  return icon;
}

}  // namespace pairwell
