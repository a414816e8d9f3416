// A host whose main() does not ask whether it is a child: what it does as one is what it always
// does, start a child.
#ifndef DOV417_TESTS_FORGETFUL_HOST_H
#define DOV417_TESTS_FORGETFUL_HOST_H

namespace dov417 {

bool isForgetfulHost(int argc, char** argv);
int runForgetfulHost(int argc, char** argv);

} // namespace dov417

#endif
