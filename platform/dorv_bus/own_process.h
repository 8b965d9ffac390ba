#ifndef DORV_BUS_OWN_PROCESS_H
#define DORV_BUS_OWN_PROCESS_H

namespace dorv {

// Remembers in which process an object was made. In a child made by fork() the
// object is of no use: its threads are not there, threads that are not there may
// hold its locks, and its socket is still the parent's.
class OwnProcess {
 public:
  OwnProcess() : number_(Number()) {}

  // False in a child made by fork().
  bool IsThisOne() const { return number_ == Number(); }

 private:
  // Another one in each child.
  static unsigned Number();

  const unsigned number_;
};

}  // namespace dorv

#endif
