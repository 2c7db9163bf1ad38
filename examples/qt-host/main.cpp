// SPDX-License-Identifier: MIT
//
// The controls in the layouts of a Qt program, fed by a recorded motion.
//
//   qt-host LOG                     shows them as the pole moves
//   qt-host LOG --screenshot FILE   shows the whole motion at once, saves a picture and ends
#include "Controls.h"

#include "framework/gui/QtInterop.h"

#include <QApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <cstdio>
#include <utility>

namespace {

// A control's widget in a box with a title.
QWidget* InBox(const QString& title, CWnd& control)
{
    auto* const box = new QGroupBox(title);
    auto* const layout = new QVBoxLayout(box);
    layout->addWidget(framework::NativeWidget(control));
    control.ShowWindow(SW_SHOW);
    return box;
}

class Page : public QWidget
{
public:
    explicit Page(std::vector<replay::Sample> samples)
        : m_samples(std::move(samples)), m_caption(new QLabel)
    {
        MakeControls();
        auto* const layout = new QGridLayout(this);
        layout->addWidget(InBox("Heading", m_controls.dial), 0, 0);
        layout->addWidget(InBox("Pitch", m_controls.left), 0, 1);
        layout->addWidget(InBox("Roll", m_controls.right), 0, 2);
        layout->addWidget(InBox("Horizontal turn", m_controls.horizontal), 1, 0);
        layout->addWidget(InBox("Vertical turn", m_controls.vertical), 1, 1, 1, 2);
        layout->addWidget(InBox("Antenna, northing up", m_controls.ground), 0, 3, 2, 1);
        layout->addWidget(m_caption, 2, 0, 1, 4);
        layout->setColumnStretch(0, 3);
        layout->setColumnStretch(3, 5);
        layout->setRowStretch(0, 1);
        layout->setRowStretch(1, 1);
        connect(&m_timer, &QTimer::timeout, this, [this] { Next(); });
        setWindowTitle("tiltpole in Qt layouts");
        resize(1000, 640);
    }

    void Play() { m_timer.start(replay::kMilliseconds); }

    bool Next()
    {
        if (m_next == m_samples.size()) return false;
        const replay::Sample& sample = m_samples[m_next++];
        m_controls.Show(sample);
        m_caption->setText(
            QString("sample %1   heading %2 degrees").arg(m_next).arg(sample.pose.dYaw, 0, 'f', 1));
        return true;
    }

private:
    // Top-level windows without a parent; the layout takes their widgets over.
    void MakeControls()
    {
        for (CStatic* meter :
             {static_cast<CStatic*>(&m_controls.dial), static_cast<CStatic*>(&m_controls.left),
              static_cast<CStatic*>(&m_controls.right)})
            meter->CreateEx(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 110, 240, nullptr, 0);
        m_controls.horizontal.Create(nullptr, nullptr, WS_OVERLAPPED, kLargest, nullptr, 0);
        m_controls.vertical.Create(nullptr, nullptr, WS_OVERLAPPED, kLargest, nullptr, 0);
        m_controls.ground.CreateEx(0, AfxRegisterWndClass(0), L"", WS_OVERLAPPED, kLargest, nullptr,
                                   0);
        for (CWnd* plot :
             {static_cast<CWnd*>(&m_controls.horizontal), static_cast<CWnd*>(&m_controls.vertical),
              static_cast<CWnd*>(&m_controls.ground)})
            plot->MoveWindow(0, 0, 220, 220); // the size hint in the layout
    }

    std::vector<replay::Sample> m_samples;
    std::size_t m_next = 0;
    Controls m_controls;
    QLabel* m_caption;
    QTimer m_timer;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const bool takesPicture = arguments.size() == 4 && arguments[2] == "--screenshot";
    if (arguments.size() != 2 && !takesPicture) {
        std::fprintf(stderr, "usage: qt-host LOG [--screenshot FILE]\n");
        return 2;
    }
    std::vector<replay::Sample> samples = replay::Read(arguments[1].toStdString());
    if (samples.empty()) {
        std::fprintf(stderr, "qt-host: there are no samples in %s\n", argv[1]);
        return 2;
    }
    Page page(std::move(samples));
    page.show();
    if (!takesPicture) {
        page.Play();
        return QApplication::exec();
    }
    QApplication::processEvents();
    while (page.Next()) {
    }
    QApplication::processEvents();
    return page.grab().save(arguments[3]) ? 0 : 1;
}
