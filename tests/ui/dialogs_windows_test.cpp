// What holds for every window: names for screen readers, texts that fit, every appearance, a small screen;
// and that icons, skins and help pages are whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <cmath>

#include "app/look/appearance.h"
#include "app/look/desktop_scheme.h"
#include "app/shell/command_table.h"
#include "app/shell/help_window.h"
#include "dialogs_support.h"
#include "frame/file_types.h"
#include "frame/ui/hosted_dialog.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"
#include "support/accessible.h"
#include "support/window_places.h"

namespace ts5 {
namespace {

using testing::IsEmpty;

constexpr SkinLayout kLayouts[] = {SkinLayout::Windows, SkinLayout::Stavora4, SkinLayout::Stavora5};

class WindowTest : public testing::TestWithParam<std::size_t> {
 protected:
  ~WindowTest() override { ApplyAppearance(*qApp, SkinLayout::Stavora5, false); }
  [[nodiscard]] static const WindowSample& Sample() { return WindowSamples().at(GetParam()); }
};

TEST_P(WindowTest, EveryControlHasANameAndCanBeReached) {
  RecordingHost host;
  const auto window = Sample().make(host);
  window->show();
  EXPECT_THAT(NamelessControls(*window), IsEmpty());
  EXPECT_THAT(UnreachableControls(*window), IsEmpty());
  if (qobject_cast<QFileDialog*>(window.get()) != nullptr) return;  // in the toolkit's own order
  // The tab key goes around, and leaves the row of the buttons once.
  const QList<QWidget*> stops = TabStops(*window);
  const auto top = [&](const QWidget* stop) { return stop->mapTo(window.get(), QPoint()).y(); };
  int row = 0;
  for (const QWidget* const stop : stops) row = std::max(row, top(stop) - 12);
  int left = 0;
  for (qsizetype i = 0; i < stops.size(); ++i)
    left += top(stops[i]) >= row && top(stops[(i + 1) % stops.size()]) < row ? 1 : 0;
  EXPECT_LE(left, 1);
}

// Whatever the screen of this run is; TS5_WHOLE_MATRIX adds the dark ones, which differ in colours only.
TEST_P(WindowTest, TextsHaveTheirPlacesInEveryLookAndSize) {
  const std::vector<bool> grounds =
      qEnvironmentVariableIsSet("TS5_WHOLE_MATRIX") ? std::vector{false, true} : std::vector{false};
  for (const SkinLayout layout : kLayouts) {
    for (const bool dark : grounds) {
      ApplyAppearance(*qApp, layout, dark);
      RecordingHost host;
      const auto window = Sample().make(host);
      window->show();
      const QSize room = window->screen()->availableSize() - QSize(8, 40);  // with a frame around it
      const auto measure = [&](const char* when) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(layout) << dark << when << window->width() << "x"
                                        << window->height());
        QTest::qWait(1);
        EXPECT_EQ(ClippedTexts(*window).join(", ").toStdString(), "");
        EXPECT_EQ(MisplacedTexts(*window).join(", ").toStdString(), "");
        EXPECT_EQ(CutTitles(*window).join(", ").toStdString(), "");
        EXPECT_LE(window->width(), room.width());
        EXPECT_LE(window->height(), room.height());
      };
      measure(" shown ");
      window->resize(window->minimumSizeHint().expandedTo(window->minimumSize()));
      measure(" smallest ");
      window->resize(room);
      measure(" largest ");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, WindowTest, testing::Range(std::size_t{0}, WindowSamples().size()),
                         [](const auto& info) {
                           QString name = QLatin1String(WindowSamples().at(info.param).name);
                           return name.remove('-').toStdString();
                         });

class TallDialog : public HostedDialog {
 public:
  explicit TallDialog(DialogHost& host) : HostedDialog(host, QString(), nullptr) {
    auto* const rows = new QVBoxLayout(this);
    for (int i = 0; i < 60; ++i) rows->addWidget(new QLineEdit(QString::number(i), this));
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(ok = new QPushButton("OK", this));
    rows->addLayout(buttons);
  }
  [[nodiscard]] QString HelpTopic() const override { return {}; }
  QPushButton* ok;
};

TEST(HostedDialogTest, WhatIsHigherThanTheScreenScrollsAboveItsButtons) {
  RecordingHost host;
  TallDialog dialog(host);
  const auto fields = dialog.findChildren<QLineEdit*>();
  fields[1]->setFocus();
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  EXPECT_TRUE(fields[1]->hasFocus());
  EXPECT_LT(dialog.height(), dialog.screen()->availableGeometry().height());
  EXPECT_TRUE(dialog.rect().contains(dialog.ok->geometry()));
  EXPECT_THAT(UnreachableControls(dialog), IsEmpty());
  fields.back()->setFocus();
  QApplication::processEvents();
  EXPECT_FALSE(fields.back()->visibleRegion().isEmpty()) << "the keyboard brings it into sight";
  fields.front()->setFocus();
  const int shown = dialog.height();
  dialog.hide();
  dialog.show();
  EXPECT_EQ(dialog.height(), shown);
}

// What the portal sends when the desktop changes; 0 is no preference, to which some go back from dark.
TEST(DesktopSchemeTest, LightComesBackWithTheDesktop) {
  DesktopScheme scheme(*qApp, SkinLayout::Stavora5);
  for (const uint value : {1U, 0U, 1U, 2U}) {
    QMetaObject::invokeMethod(
        &scheme, "SettingChanged", Q_ARG(QString, QStringLiteral("org.freedesktop.appearance")),
        Q_ARG(QString, QStringLiteral("color-scheme")), Q_ARG(QDBusVariant, QDBusVariant(QVariant(value))));
    EXPECT_EQ(IsDarkPalette(), value == 1) << value;
  }
  ApplyAppearance(*qApp, SkinLayout::Stavora5, false);
}

TEST(AccessibleWalkTest, FindsNamelessControlsAndClippedTexts) {
  QWidget window;
  auto* field = new QLineEdit(&window);
  auto* label = new QLabel("Ein Text, der breiter ist als sein Platz", &window);
  label->setFixedWidth(30);
  window.show();
  EXPECT_EQ(NamelessControls(window).size(), 1);
  EXPECT_EQ(ClippedTexts(window).size(), 1);
  field->setAccessibleName("Name");
  label->setText("ok");
  // The parts beside the letter of a key are drawn without the kerning that the text as a whole has.
  EXPECT_GE(DrawnWidth("Midi-&Tastatur", label->fontMetrics()),
            label->fontMetrics().horizontalAdvance("Midi-Tastatur"));
  EXPECT_THAT(NamelessControls(window), IsEmpty());
  EXPECT_THAT(ClippedTexts(window), IsEmpty());
}

TEST(AppearanceTest, EverySkinIsFilledInAndItsPicturesExist) {
  const QRegularExpression url("url\\(([^)]*)\\)");
  for (const SkinLayout layout : kLayouts) {
    for (const bool dark : {false, true}) {
      const QString sheet = StyleSheet(layout, dark);
      EXPECT_FALSE(sheet.isEmpty());
      EXPECT_FALSE(sheet.contains('@')) << sheet.mid(sheet.indexOf('@'), 40).toStdString();
      for (auto matches = url.globalMatch(sheet); matches.hasNext();) {
        const QString path = matches.next().captured(1);
        EXPECT_TRUE(QFile::exists(path)) << path.toStdString();
      }
    }
  }
}

TEST(AppearanceTest, ABarHasRoomForItsNumbersInASmallWindow) {
  for (const SkinLayout layout : kLayouts) {
    ApplyAppearance(*qApp, layout, false);
    QWidget window;
    QVBoxLayout column(&window);
    QProgressBar bar;
    column.addWidget(&bar);
    window.resize(300, 1);
    window.show();
    EXPECT_GE(bar.height(), bar.fontMetrics().height()) << static_cast<int>(layout);
  }
  ApplyAppearance(*qApp, SkinLayout::Stavora5, false);
}

double Luminance(const QColor& colour) {
  const auto linear = [](double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}
double Contrast(const QColor& a, const QColor& b) {
  const double x = Luminance(a) + 0.05;
  const double y = Luminance(b) + 0.05;
  return x > y ? x / y : y / x;
}

// WCAG 2.1: 4.5 to 1 for texts.
TEST(AppearanceTest, TextsStandOutFromTheirGround) {
  for (const SkinLayout layout : kLayouts) {
    for (const bool dark : {false, true}) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(layout) << dark);
      ApplyAppearance(*qApp, layout, dark);
      const QPalette palette = QApplication::palette();
      EXPECT_EQ(IsDarkPalette(), dark);
      const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
          {QPalette::WindowText, QPalette::Window},
          {QPalette::Text, QPalette::Base},
          {QPalette::Text, QPalette::AlternateBase},
          {QPalette::ButtonText, QPalette::Button},
          {QPalette::HighlightedText, QPalette::Highlight},
          {QPalette::PlaceholderText, QPalette::Window},
          {QPalette::Link, QPalette::Base}};
      for (const auto& [ink, ground] : pairs) {
        EXPECT_GE(Contrast(palette.color(ink), palette.color(ground)), 4.5)
            << int(ink) << " on " << int(ground);
      }
      const QRegularExpression role("role=\"(explanation|warning)\"\\] \\{ color: ([^;]*);");
      for (auto matches = role.globalMatch(StyleSheet(layout, dark)); matches.hasNext();) {
        const auto match = matches.next();
        EXPECT_GE(Contrast(QColor(match.captured(2)), palette.color(QPalette::Window)), 4.5)
            << match.captured(1).toStdString();
      }
      const auto chunk =
          QRegularExpression("QProgressBar::chunk \\{ background: ([^;]*);").match(StyleSheet(layout, dark));
      if (chunk.hasMatch()) {
        EXPECT_GE(Contrast(palette.color(QPalette::Text), QColor(chunk.captured(1))), 4.5) << "progress";
      }
    }
  }
  ApplyAppearance(*qApp, SkinLayout::Stavora5, false);
}

TEST(IconTest, TheWholeStripAndAllFiltersAreDrawn) {
  for (int index = 0; index < static_cast<int>(FileIcons().size()) * 2; ++index) {
    EXPECT_FALSE(StripIcon(index).isNull()) << FileIconName(index);
  }
  EXPECT_EQ(StripIcon(11).pixmap(16).toImage(), Icon("waveicon").pixmap(16).toImage());
  EXPECT_EQ(StripIcon(-1).pixmap(16).toImage(), Icon("stopicon").pixmap(16).toImage());
  EXPECT_EQ(StripIcon(1000).pixmap(16).toImage(), Icon("stopicon").pixmap(16).toImage());
  for (std::size_t id = 0; id < kFilterCount; ++id) {
    EXPECT_FALSE(FilterIcon(static_cast<FilterId>(id)).isNull()) << id;
  }
  EXPECT_TRUE(FilterIcon(FilterId::None).isNull());
  EXPECT_TRUE(Icon("gibt-es-nicht").isNull());
}

TEST(IconTest, FollowsThePaletteIntoTheDark) {
  const QIcon icon = Icon("save");
  const QImage light = icon.pixmap(32).toImage();
  ApplyAppearance(*qApp, SkinLayout::Stavora5, true);
  EXPECT_NE(icon.pixmap(32).toImage(), light);
  ApplyAppearance(*qApp, SkinLayout::Stavora5, false);
  EXPECT_EQ(icon.pixmap(32).toImage(), light);
}

QStringList Pages() {
  InitializeResources();
  return QDir(":/help").entryList({"*.htm"}, QDir::Files);
}
QString PageText(const QString& page) {
  QFile file(":/help/" + page);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << page.toStdString();
  return QString::fromUtf8(file.readAll());
}

TEST(HelpTest, EveryLinkLeadsToAPageAndEveryPageStandsInTheContents) {
  QStringList listed{"inhalt.htm", "über.htm"};
  for (const HelpEntry& entry : HelpContents()) listed << entry.topic;
  const QRegularExpression link("href=\"([^\"#]*)");
  for (const QString& page : Pages()) {
    EXPECT_TRUE(listed.contains(page)) << page.toStdString();
    for (auto matches = link.globalMatch(PageText(page)); matches.hasNext();) {
      const QString target = matches.next().captured(1);
      EXPECT_TRUE(Pages().contains(target)) << page.toStdString() << " -> " << target.toStdString();
    }
  }
}

TEST(HelpTest, EveryCommandHasItsTopicAndItsKeysStandInTheTable) {
  const QString keys = PageText("tastenkürzel.htm");
  for (const Command& command : Commands()) {
    if (!command.helpTopic.empty()) {
      EXPECT_EQ(HelpPage(ToQt(command.helpTopic)), ToQt(command.helpTopic)) << command.helpTopic;
    }
    const QString menuKeys = QtText(command.text).section('\t', 1);
    for (const QString& key : menuKeys.split(',', Qt::SkipEmptyParts)) {
      EXPECT_TRUE(keys.contains(key.trimmed())) << key.toStdString();
    }
  }
}

TEST(HelpTest, TopicsAreFoundWithoutRegardToCase) {
  EXPECT_EQ(HelpPage("befehle-aktion-Ausführen-Ergebnisse.htm"), "Befehle-aktion-ausführen-ergebnisse.htm");
  EXPECT_EQ(HelpPage(""), "inhalt.htm");
  EXPECT_EQ(HelpPage("gibtesnicht.htm"), "inhalt.htm");
}

TEST(HelpTest, StandsBesideADialogThatWaits) {
  const QRect screen(0, 0, 960, 540);
  for (const QRect dialog : {QRect(20, 40, 500, 400), QRect(420, 40, 500, 400), QRect(199, 10, 545, 500),
                             QRect(60, 10, 840, 520)}) {
    const HelpPlace place = PlaceBeside(dialog, screen, QSize(900, 640));
    EXPECT_TRUE(screen.contains(place.help)) << dialog.left();
    EXPECT_EQ(place.help.intersects(QRect(place.dialog, dialog.size())), dialog.width() > 800);
  }
  QWidget owner;
  owner.show();
  HelpWindow help;
  QMessageBox box(&owner);
  QTimer::singleShot(50, &box, [&] {
    help.OpenTopic("quellmedium.htm");
    EXPECT_TRUE(QTest::qWaitForWindowActive(&help));
    auto* const field = help.findChild<QLineEdit*>();
    QTest::mouseClick(help.windowHandle(), Qt::LeftButton, {}, field->mapTo(&help, QPoint(5, 5)));
    EXPECT_EQ(QApplication::focusWidget(), field);
    box.accept();
  });
  box.exec();
}

TEST(HelpTest, OpensGoesBackAndFinds) {
  HelpWindow window;
  window.OpenTopic("quellmedium.htm");
  EXPECT_EQ(window.CurrentTopic(), "quellmedium.htm");
  EXPECT_TRUE(window.windowTitle().startsWith("Quellmedium"));
  window.OpenTopic("zielmedium.htm");
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  QTest::keyClick(&window, Qt::Key_Left, Qt::AltModifier);
  EXPECT_EQ(window.CurrentTopic(), "quellmedium.htm");

  EXPECT_TRUE(window.FindNext("Papierkorb"));
  EXPECT_EQ(window.findChild<QTextBrowser*>()->textCursor().selectedText(), "Papierkorb");
  EXPECT_TRUE(window.FindNext("Papierkorb")) << "around the end of the page";
  EXPECT_FALSE(window.FindNext("Kontrafagott"));
  EXPECT_FALSE(window.FindNext(""));
}

}  // namespace
}  // namespace ts5
