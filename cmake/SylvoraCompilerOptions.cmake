# Warnings and sanitizers for every target of ours, through one function so no target forgets them.
function(sylvora_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                           -Wold-style-cast -Wcast-align -Wunused -Woverloaded-virtual
                                           -Wnull-dereference -Wformat=2)
  if(SYLVORA_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
endfunction()

if(SYLVORA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()
