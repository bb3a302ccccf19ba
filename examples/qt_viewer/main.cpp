// orx_qt_viewer: a picture box inside a window of Qt. See --help.
#include <QApplication>
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QResizeEvent>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <iostream>

#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// The part of a Qt window in which a picture box shows. Qt gives it a window of the window system's own.
class PictureWidget : public QWidget {
  public:
    explicit PictureWidget(QWidget* parent) : QWidget(parent) {
        setAttribute(Qt::WA_NativeWindow);
        setAttribute(Qt::WA_DontCreateNativeAncestors);
        setMinimumSize(320, 240);
        box.start();
    }
    // Before Qt takes the window away.
    ~PictureWidget() override { box.setHandle(nullptr); }

    void show(const cv::Mat& image) {
        image_ = image;
        box.setImage(image_, false);
    }

    TPictureBox box;

  protected:
    void showEvent(QShowEvent* event) override {
        QWidget::showEvent(event);
        attachSoon();
    }
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        attachSoon();
    }

  private:
    // Not inside an event: the window is made known to the window system first, which handles events.
    void attachSoon() {
        QTimer::singleShot(0, this, [this] { attach(); });
    }

    void attach() {
        const QSize pixels = size() * devicePixelRatioF();
        const auto handle = reinterpret_cast<void*>(winId());
        QGuiApplication::sync();
        box.setHandle(handle, pixels.width(), pixels.height());
        if (!image_.empty()) box.setImage(image_, false);
    }

    cv::Mat image_;
};

cv::Mat partsOf(std::uint64_t seed) {
    scenes::SceneSettings settings;
    settings.seed = seed;
    return scenes::renderScene(settings).image;
}

class MainWindow : public QWidget {
  public:
    MainWindow() : picture_(new PictureWidget(this)), label_(new QLabel(this)) {
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
        QObject::connect(next, &QPushButton::clicked, this, [this] { picture_->show(partsOf(++seed_)); });
        QObject::connect(select, &QPushButton::toggled, this, [this](bool on) { setSelecting(on); });
        auto* const timer = new QTimer(this);
        QObject::connect(timer, &QTimer::timeout, this, [this] { tellSelection(); });
        timer->start(200);
        picture_->box.selectRect = true;
        picture_->show(partsOf(seed_));
    }

  private:
    void setSelecting(bool on) {
        picture_->box.setFunction(on ? FUNC_EDIT_RECT : FUNC_ZOOM_PAN);
        picture_->box.setCursor(on ? CURSOR_SIZEALL : CURSOR_ARROW);
    }

    void tellSelection() {
        cv::Rect2d rect;
        label_->setText(TPictureBox::getSelectionRect(rect) ? QString("%1 x %2 at (%3, %4)")
                                                                  .arg(rect.width, 0, 'f', 1)
                                                                  .arg(rect.height, 0, 'f', 1)
                                                                  .arg(rect.x, 0, 'f', 1)
                                                                  .arg(rect.y, 0, 'f', 1)
                                                            : QString("nothing selected"));
    }

    PictureWidget* picture_;
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
