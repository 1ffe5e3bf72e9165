" Vim syntax of Brenta scripts.
if exists('b:current_syntax')
    finish
endif

syntax keyword brentaStatement  break continue return print execute _halt
syntax keyword brentaCondition  if else
syntax keyword brentaLoop       for foreach in while
syntax keyword brentaDefinition var function class inherits as
syntax keyword brentaReserved   enum interface method
syntax keyword brentaInclude    include
syntax keyword brentaBool       true false
syntax keyword brentaNull       null
syntax keyword brentaHost       Env StdLib reflect

syntax match  brentaNumber "\<\d\+\(in\|cm\|mil\|mm\)\=\>"
syntax match  brentaNumber "\(\<\d\+\.\d*\|\.\d\+\)\(in\|cm\|mil\|mm\)\=\>\="
syntax match  brentaNumber "\<0x\x\+\>\|\<0b[01]\+\>"
syntax match  brentaCharacter "'\(\\.[^']*\|[^'\\]\)'"
" There are no escapes in texts, and a text may span lines.
syntax region brentaString  start=+"+ end=+"+
syntax region brentaComment start="//" end="$" contains=brentaTodo,@Spell keepend
syntax keyword brentaTodo   TODO FIXME contained
syntax match  brentaFunction "\(\<function\s\+\)\@<=\h\w*"
syntax match  brentaClass    "\(\<class\s\+\|\<inherits\s\+\|\<as\s\+\)\@<=\h\w*"
syntax sync fromstart

highlight default link brentaStatement  Statement
highlight default link brentaCondition  Conditional
highlight default link brentaLoop       Repeat
highlight default link brentaDefinition Keyword
highlight default link brentaReserved   Error
highlight default link brentaInclude    Include
highlight default link brentaBool       Boolean
highlight default link brentaNull       Constant
highlight default link brentaHost       Identifier
highlight default link brentaNumber     Number
highlight default link brentaCharacter  Character
highlight default link brentaString     String
highlight default link brentaComment    Comment
highlight default link brentaTodo       Todo
highlight default link brentaFunction   Function
highlight default link brentaClass      Type

let b:current_syntax = 'brenta'
