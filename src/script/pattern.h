// Patterns of token kinds: from text to chains of atoms.
#pragma once

#include "brenta/lexer.h"

namespace brenta {

/// Groups within groups that a pattern may have. Compiling, matching and freeing recurse once per level.
inline constexpr int kMaxGroupDepth = 100;

/// Compiles one pattern for a lexer, which keeps the sets. See brenta/lexer.h for the language.
///
/// The first failure ends the compilation; its message is a literal.
class PatternCompiler {
 public:
    PatternCompiler(CCoreLexer& lexer, const char* pattern) : m_lexer(lexer), m_p(pattern) {}

    /// Compiles the whole pattern into the chain that starts with `root`, an empty atom. On failure the chain
    /// holds what was compiled until then and is as good to free as a whole one.
    bool Compile(REAtom* root);
    /// Why Compile failed.
    const char* Error() const { return m_error; }

 private:
    bool CompileChain(REAtom* atom, int depth);
    bool CompileTag(REAtom* atom);
    bool CompileOperand(REAtom* atom, int depth);
    bool CompileGroup(REAtom* atom, int depth);
    bool CompileClass(REAtom* atom);
    bool CompileItems(RECharClass& set);
    bool CompileLiteral(REAtom* atom);
    void ReadPostfix(REAtom* atom);
    bool ReadEscape(char& c);
    void SkipWhite();
    bool Fail(const char* message);

    CCoreLexer& m_lexer;
    const char* m_p;  // the next character of the pattern
    const char* m_error = "";
};

/// Frees a chain and all groups in it; null is fine.
void FreeAtoms(REAtom* chain);

/// What a copied set atom refers to, given the original's set.
using ClassMapper = RECharClass* (*)(RECharClass* original, void* context);

/// Copies a chain and all groups in it.
REAtom* CopyAtoms(const REAtom* chain, ClassMapper mapClass, void* context);

}  // namespace brenta
