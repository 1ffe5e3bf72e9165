// How far a long operation has come, for a person at a terminal.
#pragma once

namespace brenta::host {

/// A bar on standard error, if that is a terminal; it goes with the object.
class ProgressBar {
 public:
    ProgressBar();
    ~ProgressBar() { Clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Draws the bar; `percent` is taken as 0 to 100.
    void Show(int percent);
    /// Makes room for a line of output.
    void Clear();

 private:
    const bool m_isShown;
    int m_percent = -1;  ///< as drawn; below 0 if nothing is
};

}  // namespace brenta::host
