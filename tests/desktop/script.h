// What a user does with the windows that appear while a call is still running.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <deque>
#include <functional>
#include <string>

namespace testsupport {

/// Steps are taken in their order, each as soon as its window is the modal one
/// and its condition holds. All must have been taken when the script ends.
class Script {
 public:
  Script() {
    QObject::connect(&timer_, &QTimer::timeout, [this] { TakeStep(); });
    // With every round of events: a call that works fast has few of them.
    timer_.start(0);
    started_.start();
  }
  ~Script() { EXPECT_TRUE(steps_.empty()) << steps_.size() << " steps were not taken"; }

  template <class Window>
  Script& On(
      std::function<void(Window&)> action,
      std::function<bool(Window&)> isTime = [](Window&) { return true; }) {
    steps_.push_back([=] {
      auto* const window = qobject_cast<Window*>(QApplication::activeModalWidget());
      return window != nullptr && isTime(*window) ? std::function<void()>([=] { action(*window); })
                                                  : nullptr;
    });
    return *this;
  }

 private:
  void TakeStep() {
    constexpr qint64 kPatience = 20'000;
    if (started_.elapsed() > kPatience) return GiveUp();
    if (steps_.empty()) return;
    const std::function<void()> action = steps_.front()();
    if (!action) return;
    // Before the action, which may open the window of the next step.
    steps_.pop_front();
    action();
  }

  /// Lets the call that waits for a window return.
  static void GiveUp() {
    ADD_FAILURE() << "the windows did not come as expected";
    if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
      dialog->done(QDialog::Rejected);
    }
  }

  QTimer timer_;
  QElapsedTimer started_;
  std::deque<std::function<std::function<void()>()>> steps_;
};

/// Clicks the button of this label, whatever its mnemonic.
inline void Click(QWidget& window, const QString& label) {
  for (auto* const button : window.findChildren<QAbstractButton*>()) {
    if (QString(button->text()).remove('&') != label) continue;
    QTest::mouseClick(button, Qt::LeftButton);
    return;
  }
  ADD_FAILURE() << "no button " << label.toStdString();
}

}  // namespace testsupport
