#include "resources/icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <array>
#include <utility>

#include "frame/file_types.h"
#include "frame/filter_catalogue.h"
#include "platform/base/text.h"

// Outside of the namespace, as the toolkit asks for it.
static void InitializeQrc() {
  Q_INIT_RESOURCE(resources);
}

namespace ts5 {
namespace {

// The inks of the drawings, for a light and for a dark ground.
constexpr std::array<std::pair<const char*, const char*>, 14> kInks{{
    {"#3b4856", "#d0d8e0"},  // outlines and writing
    {"#ffffff", "#39434e"},  // paper
    {"#d5dde5", "#5a6671"},  // soft fills
    {"#7b8794", "#97a3af"},  // grey
    {"#1f7a8c", "#4fb6c9"},  // the accent
    {"#3c8f4a", "#62bd70"},  // green: MIDI
    {"#2d6fb8", "#66a6e8"},  // blue: sound
    {"#7d52b4", "#b08ae2"},  // violet: scores
    {"#c9790a", "#e8a33d"},  // amber
    {"#c6413a", "#ee7a72"},  // red: stop, delete, missing
    {"#14857c", "#45bdb2"},  // teal: XML
    {"#b8447f", "#e27fb2"},  // pink: encoders
    {"#f0c36a", "#a97f33"},  // folders
    {"#fefefe", "#1b2127"},  // writing on a coloured ground
}};

class IconEngine : public QIconEngine {
 public:
  IconEngine(QString name, QByteArray drawing) : name_(std::move(name)), drawing_(std::move(drawing)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const qreal scale = painter->device() != nullptr ? painter->device()->devicePixelRatioF() : 1.0;
    const QPixmap pixmap = Rendered(rect.size() * scale, mode);
    painter->drawPixmap(rect, pixmap);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override { return Rendered(size, mode); }
  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal) override {
    return Rendered(size, mode);
  }
  QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override { return size; }
  bool isNull() override { return drawing_.isEmpty(); }
  QIconEngine* clone() const override { return new IconEngine(*this); }
  QString key() const override { return QStringLiteral("ts5"); }

 private:
  [[nodiscard]] QPixmap Rendered(const QSize& size, QIcon::Mode mode) const {
    const bool dark = IsDarkPalette();
    const QString cached = QStringLiteral("ts5/%1/%2x%3/%4%5")
                               .arg(name_)
                               .arg(size.width())
                               .arg(size.height())
                               .arg(int(mode))
                               .arg(int(dark));
    QPixmap pixmap;
    if (QPixmapCache::find(cached, &pixmap)) return pixmap;

    QByteArray drawing = drawing_;
    if (dark) {
      for (const auto& [light, onDark] : kInks) drawing.replace(light, onDark);
    }
    pixmap = QPixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    if (mode == QIcon::Disabled) painter.setOpacity(0.4);
    QSvgRenderer(drawing).render(&painter, QRectF(QPointF(), QSizeF(size)));
    painter.end();
    QPixmapCache::insert(cached, pixmap);
    return pixmap;
  }

  QString name_;
  QByteArray drawing_;
};

}  // namespace

void InitializeResources() {
  [[maybe_unused]] static const bool done = (InitializeQrc(), true);
}

QIcon Icon(std::string_view name) {
  InitializeResources();
  const QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
  // Icons are asked for once per row of a list: the same object serves them all.
  static QHash<QString, QIcon> icons;
  if (const auto known = icons.constFind(text); known != icons.constEnd()) return *known;
  QFile file(QStringLiteral(":/icons/%1.svg").arg(text));
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QIcon icon(new IconEngine(text, file.readAll()));
  icons.insert(text, icon);
  return icon;
}

QIcon StripIcon(int index) {
  const std::string_view name = FileIconName(index);
  return Icon(ToLower(name.empty() ? FileIconName(FileTypeId::Unsupported) : name));
}

QIcon FilterIcon(FilterId id) {
  return IsFilter(id) ? Icon("filter_" + ToLower(Descriptor(id).identifier)) : QIcon();
}

bool IsDarkPalette() {
  return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

}  // namespace ts5
