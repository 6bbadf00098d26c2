# Completions of tandrel(1) for bash.
# shellcheck shell=bash

_tandrel() {
  local word=${COMP_WORDS[COMP_CWORD]}
  local options='--no-sender --no-receiver --browser --no-browser --http-port --udp-port --verbose'
  local place

  COMPREPLY=()
  if ((COMP_CWORD > 1)); then
    case ${COMP_WORDS[1]} in
    hub | sender | receiver | align)
      compopt -o default # a component's arguments: files
      return
      ;;
    -h | --help) return ;;
    esac
  fi
  compopt -o nosort 2>/dev/null # bash 4.4
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "hub sender receiver align $options --help -h" -- "$word")
    return
  fi

  # A port may look like an option.
  for ((place = 1; place < COMP_CWORD; ++place)); do
    case ${COMP_WORDS[place]} in
    --http-port | --udp-port) ((++place == COMP_CWORD)) && return ;;
    esac
  done
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
} && complete -F _tandrel tandrel
