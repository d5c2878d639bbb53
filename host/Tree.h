#pragma once

#include <map>
#include <vector>

namespace trel::host {

/// Who contains whom, among the components and controllers that live when it is
/// made. Controllers are the station logic's. Components may nest as deep as they
/// like: who goes over the tree does not call himself.
class Tree {
public:
    Tree();

    unsigned root() const { return root_; }

    /// By id; controllers last.
    std::vector<unsigned> children(unsigned parent) const;

    /// What hangs together with the root, each followed by what it contains.
    std::vector<unsigned> all() const;

private:
    unsigned root_;
    std::multimap<unsigned, unsigned> children_;
};

}  // namespace trel::host
