// The small images of the confirm window's folder list: a folder that
// receives the file, the folder whose copy is the source, and a folder
// whose copy is deleted. Taken from the desktop theme where it has them,
// else drawn.
#ifndef PAIRWELL_UI_RUN_IMAGE_LIST_H_
#define PAIRWELL_UI_RUN_IMAGE_LIST_H_

#include <QIcon>
#include <QObject>
#include <array>

namespace pairwell {

class ImageList final : public QObject {
  Q_OBJECT

 public:
  // Image numbers, 1-based.
  static constexpr int kDestination = 1;
  static constexpr int kSource = 2;
  static constexpr int kDeleted = 3;
  static constexpr int kCount = 3;

  explicit ImageList(QObject* parent = nullptr);
  ~ImageList() override;
  Q_DISABLE_COPY_MOVE(ImageList)

  // Image i, 1..kCount; another number gives a null icon.
  QIcon Image(int i) const;

  // The drawn image i, the one used where the theme has none.
  static QIcon DrawnImage(int i);

 private:
  std::array<QIcon, kCount> images_;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_IMAGE_LIST_H_
