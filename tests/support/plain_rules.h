// The planning rules written down as plainly as they are told: quadratic, whole lists copied.
#ifndef DOV417_TESTS_PLAIN_RULES_H
#define DOV417_TESTS_PLAIN_RULES_H

#include <ostream>
#include <string>
#include <vector>

struct PlainKey {
    long long station;
    std::string regName;
    int address;
    int length;
    int opener; // index of the key that opened the group
};

struct PlainPlan {
    std::vector<PlainKey> requests;
    std::vector<int> starts; // recipes: index of each record that opened a group
    std::vector<int> order;  // recipes: which of the handed records stands where
};

PlainPlan plainCyclicPlan(std::vector<PlainKey> keys, int mergeGap);
PlainPlan plainRecipePlan(std::vector<PlainKey> records);
// The same for records that are in order.
PlainPlan plainRecipeRuns(const std::vector<PlainKey>& sorted);
void plainSort(std::vector<PlainKey>& keys);

bool operator==(const PlainKey& a, const PlainKey& b);
std::ostream& operator<<(std::ostream& out, const PlainKey& key);

#endif
