// For clang-tidy: looks at what the tree holds, not at the system's headers, of which nothing is
// reported anyway. They are most of what a source includes, and most of the time it takes.
#include <clang-tidy/ClangTidyCheck.h>
#include <clang-tidy/ClangTidyModule.h>
#include <clang-tidy/ClangTidyModuleRegistry.h>

namespace {

using namespace clang;

class TreeOnly : public tidy::ClangTidyCheck {
public:
    using ClangTidyCheck::ClangTidyCheck;

    void registerMatchers(ast_matchers::MatchFinder* finder) override
    {
        finder->addMatcher(ast_matchers::translationUnitDecl().bind("all"), this);
    }

    // The declaration of everything is met before what is in it.
    void check(const ast_matchers::MatchFinder::MatchResult& result) override
    {
        const SourceManager& sources = *result.SourceManager;
        std::vector<Decl*> ours;
        for (Decl* declaration : result.Nodes.getNodeAs<TranslationUnitDecl>("all")->decls()) {
            const SourceLocation place = declaration->getLocation();
            if (place.isValid() && !sources.isInSystemHeader(sources.getExpansionLoc(place)))
                ours.push_back(declaration);
        }
        result.Context->setTraversalScope(ours);
    }
};

class Module : public tidy::ClangTidyModule {
public:
    void addCheckFactories(tidy::ClangTidyCheckFactories& factories) override
    {
        factories.registerCheck<TreeOnly>("orblink-tree-only");
    }
};

const tidy::ClangTidyModuleRegistry::Add<Module> kModule{"orblink", "Leaves out system headers."};

}  // namespace
