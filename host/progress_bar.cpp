#include "progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "terminal.h"

namespace brenta::host {

ProgressBar::ProgressBar() : m_isShown(ErrorsGoToTerminal()) {}

void ProgressBar::Show(int percent) {
    percent = std::clamp(percent, 0, 100);
    if (!m_isShown || percent == m_percent) return;
    constexpr int kWidth = 40;
    const std::string bar(static_cast<std::size_t>(percent * kWidth / 100), '#');
    std::fflush(stdout);
    std::fprintf(stderr, "\r[%-*s] %3d %%", kWidth, bar.c_str(), percent);
    m_percent = percent;
}

void ProgressBar::Clear() {
    if (m_percent >= 0) std::fputs("\r\033[K", stderr);
    m_percent = -1;
}

}  // namespace brenta::host
