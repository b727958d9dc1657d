#pragma once
#include <string>

namespace cvn73100 {

// An exclusive lock on a form for the object's life: `flock` on "<form>.lock" beside the file the form's
// path leads to. Every change of the form happens under it; readers need none, since the form is only
// ever replaced whole.
class FormLock {
 public:
  explicit FormLock(const std::string& formPath);
  ~FormLock();
  FormLock(const FormLock&) = delete;
  FormLock& operator=(const FormLock&) = delete;

 private:
  int m_fd = -1;
};

}  // namespace cvn73100
