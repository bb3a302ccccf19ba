// orx_qt_viewer: a picture box inside a window of Qt. See --help.
#include <QApplication>
#include <QCommandLineParser>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <iostream>

#include "orxFunctions/display/qt_picture_widget.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

class MainWindow : public QWidget {
  public:
    MainWindow() : picture_(new TQtPictureWidget(this)), label_(new QLabel(this)) {
        setWindowTitle("orxFunctions in Qt");
        auto* const next = new QPushButton("Next picture", this);
        auto* const select = new QPushButton("Select", this);
        select->setCheckable(true);
        auto* const buttons = new QHBoxLayout;
        buttons->addWidget(next);
        buttons->addWidget(select);
        buttons->addWidget(label_, 1);
        auto* const all = new QVBoxLayout(this);
        all->addWidget(picture_, 1);
        all->addLayout(buttons);
        QObject::connect(next, &QPushButton::clicked, this, [this] { showParts(++seed_); });
        QObject::connect(select, &QPushButton::toggled, this, [this](bool on) { setSelecting(on); });
        // [picture]
        picture_->setMinimumSize(320, 240);
        picture_->onSelectionChanged([this](const TSelectionChange& change) { tellSelection(change); });
        picture_->onCursor([this](const TPicturePlace& place) { tellPlace(place); });
        picture_->box().selectRect = true;
        showParts(seed_);
        // [picture end]
    }

  private:
    void setSelecting(bool on) {
        picture_->box().setFunction(on ? FUNC_EDIT_RECT : FUNC_ZOOM_PAN);
        picture_->box().setCursor(on ? CURSOR_SIZEALL : CURSOR_ARROW);
    }

    // Disks in circles, the middles of bars as crosses, handed in with the picture.
    void showParts(std::uint64_t seed) {
        scenes::SceneSettings settings;
        settings.seed = seed;
        const scenes::Scene scene = scenes::renderScene(settings);
        TOverlay marks;
        marks.setStyle({{0, 255, 255}, 2, 1.0});
        for (const scenes::Disk& disk : scene.disks) marks.circle(disk.center, disk.radius);
        for (const scenes::Bar& bar : scene.bars) marks.cross(bar.center, 8.0);
        picture_->box().setPicture(scene.image, marks);
    }

    void tellSelection(const TSelectionChange& change) {
        const cv::Rect2d& rect = change.rect;
        label_->setText(change.hasRect ? QString("%1 x %2 at (%3, %4)")
                                             .arg(rect.width, 0, 'f', 1)
                                             .arg(rect.height, 0, 'f', 1)
                                             .arg(rect.x, 0, 'f', 1)
                                             .arg(rect.y, 0, 'f', 1)
                                       : QString("nothing selected"));
    }

    void tellPlace(const TPicturePlace& place) {
        if (place.isInside)
            label_->setText(QString("(%1, %2): %3").arg(place.pixel.x).arg(place.pixel.y).arg(place.grey));
    }

    TQtPictureWidget* picture_;
    QLabel* label_;
    std::uint64_t seed_ = 1;
};

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Shows pictures in a picture box inside a window of Qt.");
    parser.addHelpOption();
    const QCommandLineOption seconds("seconds", "End after this time.", "N", "0");
    const QCommandLineOption screenshot("screenshot", "Write what is seen at the end as a picture.", "FILE");
    parser.addOptions({seconds, screenshot});
    parser.process(application);

    MainWindow window;
    window.resize(640, 520);
    window.show();
    int exitCode = 0;
    const double time = parser.value(seconds).toDouble();
    if (time > 0.0) {
        QTimer::singleShot(static_cast<int>(1000.0 * time), &window, [&] {
            if (parser.isSet(screenshot)) {
                // Of the screen: what a picture box shows is not Qt's.
                const QPixmap seen = window.screen()->grabWindow(window.winId());
                if (!seen.save(parser.value(screenshot))) {
                    std::cerr << "orx_qt_viewer: the screenshot can't be written\n";
                    exitCode = 1;
                }
            }
            QApplication::quit();
        });
    }
    const int result = QApplication::exec();
    return exitCode != 0 ? exitCode : result;
}
